#include "gpu/device.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include <GL/gl.h>
#include <GL/glu.h>

#include "support/report.h"

namespace {

using NameBuffer = std::array<char, 64>;

NameBuffer deviceName{};
NameBuffer className{}; // of the newest device

// False if the text does not fit; the result is then empty.
bool joinName(NameBuffer& result, std::string_view prefix) {
    result.fill('\0');
    const std::string_view name = deviceName.data();
    if (prefix.size() + name.size() >= result.size())
        return false;
    std::copy(name.begin(), name.end(), std::copy(prefix.begin(), prefix.end(), result.begin()));
    return true;
}

// True if the class exists afterwards; an earlier instance of the module may have registered it.
bool haveWindowClass(HINSTANCE instance) {
    WNDCLASSEXA description{};
    if (GetClassInfoExA(instance, className.data(), &description))
        return true;
    description.cbSize = sizeof(description);
    description.style = CS_VREDRAW | CS_HREDRAW;
    description.lpfnWndProc = DefWindowProcA;
    description.hInstance = instance;
    description.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    description.lpszClassName = className.data();
    return RegisterClassExA(&description) != 0;
}

PIXELFORMATDESCRIPTOR pixelFormat() {
    PIXELFORMATDESCRIPTOR format{};
    format.nSize = sizeof(format);
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    format.iPixelType = PFD_TYPE_RGBA;
    format.cColorBits = 32;
    format.cDepthBits = 8;
    return format;
}

void reportString(const char* format, GLenum name) {
    if (const GLubyte* text = glGetString(name); text != nullptr)
        _printf(format, text);
}

} // namespace

void setDeviceName(const char* name) {
    const std::size_t length = std::min(std::strlen(name), deviceName.size() - 1);
    deviceName.fill('\0');
    std::copy_n(name, length, deviceName.begin());
}

void createDevice(HWND& window, HDC& deviceContext, HGLRC& renderContext) {
    NameBuffer newClassName{};
    if (!joinName(newClassName, "AEGL_WindowDevice_"))
        return;
    className = newClassName;
    const HINSTANCE instance = GetModuleHandleA(nullptr); // the host's executable, not the module
    if (!haveWindowClass(instance))
        return;
    NameBuffer title{};
    joinName(title, "OpenGL_AE_"); // shorter than the class name, so it fits
    window = CreateWindowExA(0, className.data(), title.data(), 0, 0, 0, 50, 50, nullptr, nullptr,
                             instance, nullptr);
    deviceContext = GetDC(window);
    const PIXELFORMATDESCRIPTOR wanted = pixelFormat();
    const int format = ChoosePixelFormat(deviceContext, &wanted);
    wglMakeCurrent(nullptr, nullptr);
    SetPixelFormat(deviceContext, format, &wanted);
    renderContext = wglCreateContext(deviceContext);
}

void destroyDevice(HWND window, HDC deviceContext, HGLRC renderContext) {
    wglDeleteContext(renderContext);
    ReleaseDC(window, deviceContext);
    UnregisterClassA(className.data(), nullptr);
}

ContextSwitch::ContextSwitch(const Device& device)
    : previousDC(wglGetCurrentDC()), previousContext(wglGetCurrentContext()) {
    wglMakeCurrent(device.glDeviceContext, device.glRenderContext);
}

void ContextSwitch::restore() {
    if (isOpen)
        wglMakeCurrent(previousDC, previousContext);
    isOpen = false;
}

void reportVersion() {
    _printf("OpenGL Version Infomation\n");
    reportString("Vendor   : %s\n", GL_VENDOR);
    reportString("Renderer : %s\n", GL_RENDERER);
    reportString("Version  : %s\n", GL_VERSION);
    reportString("Extentions : %s\n", GL_EXTENSIONS);
}

unsigned int reportError() {
    const GLenum error = glGetError();
    if (error == GL_NO_ERROR) {
        _printf("No Error.\n");
        return error;
    }
    const GLubyte* text = gluErrorString(error);
    _printf("OpenGL Error: %s\n", text == nullptr ? "" : reinterpret_cast<const char*>(text));
    return error;
}

unsigned int reportErrorAfter(const char* text) {
    _printf("%s", text);
    return reportError();
}
