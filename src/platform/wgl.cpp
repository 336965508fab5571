#include "platform/wgl.h"

#include <algorithm>
#include <array>
#include <list>
#include <map>
#include <string_view>

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

struct HDC__ {
    EGLDisplay display;
    EGLSurface draw;
    EGLSurface read;
    EGLConfig config = nullptr;          // null until a pixel format is set
    EGLSurface pbuffer = EGL_NO_SURFACE; // owned; only if contexts need a surface
};

namespace {

std::list<HDC__>& deviceContexts() {
    static std::list<HDC__> records; // a list: a record's address is its handle
    return records;
}

// The contexts of wglCreateContext, each with its display.
std::map<EGLContext, EGLDisplay>& ownContexts() {
    static std::map<EGLContext, EGLDisplay> contexts;
    return contexts;
}

bool isKnown(HDC deviceContext) {
    return std::ranges::any_of(deviceContexts(),
                               [=](HDC__& known) { return &known == deviceContext; });
}

HDC intern(EGLDisplay display, EGLSurface draw, EGLSurface read) {
    auto& records = deviceContexts();
    const auto found = std::ranges::find_if(records, [=](const HDC__& record) {
        return record.display == display && record.draw == draw && record.read == read;
    });
    if (found != records.end())
        return &*found;
    return &records.emplace_back(HDC__{display, draw, read});
}

// Whether `name` is in the list `extensions`, which may be null.
bool lists(const char* extensions, std::string_view name) {
    std::string_view rest = extensions == nullptr ? "" : extensions;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        if (rest.substr(0, end) == name)
            return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}

EGLDisplay surfacelessDisplay() {
    const char* extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (!lists(extensions, "EGL_EXT_platform_base") ||
        !lists(extensions, "EGL_MESA_platform_surfaceless"))
        return EGL_NO_DISPLAY;
    const auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    return getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
}

bool isInitialised(EGLDisplay display) {
    return display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) == EGL_TRUE;
}

// Initialised at each call: other code may have terminated the display.
EGLDisplay initialisedDisplay() {
    if (const EGLDisplay display = surfacelessDisplay(); isInitialised(display))
        return display;
    const EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    return isInitialised(display) ? display : EGL_NO_DISPLAY;
}

bool needsSurface(EGLDisplay display) {
    return !lists(eglQueryString(display, EGL_EXTENSIONS), "EGL_KHR_surfaceless_context");
}

EGLConfig firstConfig(EGLDisplay display, const EGLint* attributes) {
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglChooseConfig(display, attributes, &config, 1, &count) != EGL_TRUE || count == 0)
        return nullptr;
    return config;
}

BOOL releaseCurrent() {
    const EGLDisplay display = eglGetCurrentDisplay();
    if (display == EGL_NO_DISPLAY)
        return TRUE;
    return eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT) == EGL_TRUE;
}

} // namespace

HDC GetDC(HWND window) {
    if (!IsWindow(window))
        return nullptr;
    const EGLDisplay display = initialisedDisplay();
    if (display == EGL_NO_DISPLAY)
        return nullptr;
    return intern(display, EGL_NO_SURFACE, EGL_NO_SURFACE);
}

int ReleaseDC(HWND window, HDC deviceContext) {
    if (!IsWindow(window) || !isKnown(deviceContext))
        return 0;
    if (deviceContext->pbuffer != EGL_NO_SURFACE) {
        eglDestroySurface(deviceContext->display, deviceContext->pbuffer);
        *deviceContext = HDC__{deviceContext->display, EGL_NO_SURFACE, EGL_NO_SURFACE};
    }
    deviceContext->config = nullptr;
    return 1;
}

int ChoosePixelFormat(HDC deviceContext, const PIXELFORMATDESCRIPTOR* wanted) {
    if (!isKnown(deviceContext) || wanted == nullptr)
        return 0;
    const EGLDisplay display = deviceContext->display;
    const EGLint surfaceType = needsSurface(display) ? EGL_PBUFFER_BIT : 0;
    const auto attributes = std::to_array<EGLint>(
        {EGL_SURFACE_TYPE, surfaceType, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_BUFFER_SIZE,
         wanted->cColorBits, EGL_DEPTH_SIZE, wanted->cDepthBits, EGL_NONE});
    const EGLConfig config = firstConfig(display, attributes.data());
    EGLint number = 0;
    if (config != nullptr)
        eglGetConfigAttrib(display, config, EGL_CONFIG_ID, &number);
    return number;
}

BOOL SetPixelFormat(HDC deviceContext, int format, const PIXELFORMATDESCRIPTOR* /*wanted*/) {
    if (!isKnown(deviceContext) || format <= 0)
        return FALSE;
    const EGLDisplay display = deviceContext->display;
    const auto attributes = std::to_array<EGLint>({EGL_CONFIG_ID, format, EGL_NONE});
    const EGLConfig config = firstConfig(display, attributes.data());
    if (config == nullptr)
        return FALSE;
    if (needsSurface(display) && deviceContext->pbuffer == EGL_NO_SURFACE) {
        const auto size = std::to_array<EGLint>({EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE});
        const EGLSurface pbuffer = eglCreatePbufferSurface(display, config, size.data());
        if (pbuffer == EGL_NO_SURFACE)
            return FALSE;
        *deviceContext = HDC__{display, pbuffer, pbuffer, config, pbuffer};
    }
    deviceContext->config = config;
    return TRUE;
}

HGLRC wglCreateContext(HDC deviceContext) {
    if (!isKnown(deviceContext) || deviceContext->config == nullptr)
        return nullptr;
    // The bound API is a state of the thread and restored below. No attributes: without a version,
    // the driver creates a context of the compatibility profile.
    const EGLenum callersApi = eglQueryAPI();
    eglBindAPI(EGL_OPENGL_API);
    const EGLContext context =
        eglCreateContext(deviceContext->display, deviceContext->config, EGL_NO_CONTEXT, nullptr);
    eglBindAPI(callersApi);
    if (context != EGL_NO_CONTEXT)
        ownContexts()[context] = deviceContext->display;
    return static_cast<HGLRC>(context);
}

BOOL wglDeleteContext(HGLRC context) {
    const auto found = ownContexts().find(context);
    if (found == ownContexts().end())
        return FALSE;
    const EGLDisplay display = found->second;
    ownContexts().erase(found);
    if (eglGetCurrentContext() == context)
        releaseCurrent();
    return eglDestroyContext(display, context) == EGL_TRUE;
}

BOOL wglMakeCurrent(HDC deviceContext, HGLRC context) {
    if (deviceContext != nullptr && context != nullptr && isKnown(deviceContext) &&
        eglMakeCurrent(deviceContext->display, deviceContext->draw, deviceContext->read, context))
        return TRUE;
    const bool isReleaseWanted = deviceContext == nullptr && context == nullptr;
    return releaseCurrent() && isReleaseWanted;
}

HDC wglGetCurrentDC() {
    if (eglGetCurrentContext() == EGL_NO_CONTEXT)
        return nullptr;
    return intern(eglGetCurrentDisplay(), eglGetCurrentSurface(EGL_DRAW),
                  eglGetCurrentSurface(EGL_READ));
}

HGLRC wglGetCurrentContext() {
    return static_cast<HGLRC>(eglGetCurrentContext());
}
