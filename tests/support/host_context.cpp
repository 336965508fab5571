#include "tests/support/host_context.h"

#include <gtest/gtest.h>

#ifdef _WIN32

#include "platform/wgl.h"

CurrentContext currentContext() {
    return {wglGetCurrentDC(), wglGetCurrentContext()};
}

std::vector<HostKind> hostKinds() {
    return {{0, true}};
}

HostContext::HostContext(const HostKind& kind) : kind_(kind) {
    HWND window = CreateWindowExA(0, "STATIC", "host", 0, 0, 0, 10, 10, nullptr, nullptr,
                                  GetModuleHandleA(nullptr), nullptr);
    HDC deviceContext = GetDC(window);
    PIXELFORMATDESCRIPTOR wanted{};
    wanted.nSize = sizeof(wanted);
    wanted.nVersion = 1;
    wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
    wanted.cColorBits = 24;
    EXPECT_TRUE(SetPixelFormat(deviceContext, ChoosePixelFormat(deviceContext, &wanted), &wanted));
    display_ = window;
    all = {deviceContext, wglCreateContext(deviceContext)};
    makeCurrent();
}

HostContext::~HostContext() {
    release();
    wglDeleteContext(static_cast<HGLRC>(all[1]));
    ReleaseDC(static_cast<HWND>(display_), static_cast<HDC>(all[0]));
    DestroyWindow(static_cast<HWND>(display_));
}

void HostContext::makeCurrent() const {
    EXPECT_TRUE(wglMakeCurrent(static_cast<HDC>(all[0]), static_cast<HGLRC>(all[1])));
}

void HostContext::release() const {
    wglMakeCurrent(nullptr, nullptr);
}

bool HostContext::isApiBound() const {
    return true; // only one can be made
}

#else

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

CurrentContext currentContext() {
    return {eglGetCurrentDisplay(), eglGetCurrentSurface(EGL_DRAW), eglGetCurrentSurface(EGL_READ),
            eglGetCurrentContext()};
}

std::vector<HostKind> hostKinds() {
    return {{EGL_OPENGL_API, false}, {EGL_OPENGL_ES_API, true}, {EGL_OPENGL_API, true}};
}

HostContext::HostContext(const HostKind& kind) : kind_(kind) {
    display_ = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    all[0] = display_;
    EXPECT_TRUE(eglInitialize(display_, nullptr, nullptr));
    const EGLint renderable = kind.api == EGL_OPENGL_API ? EGL_OPENGL_BIT : EGL_OPENGL_ES2_BIT;
    const auto wanted = std::to_array<EGLint>(
        {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, renderable, EGL_NONE});
    EGLConfig config = nullptr;
    EGLint count = 0;
    EXPECT_TRUE(eglChooseConfig(display_, wanted.data(), &config, 1, &count));
    eglBindAPI(kind.api);
    const auto version = std::to_array<EGLint>({EGL_CONTEXT_MAJOR_VERSION, 2, EGL_NONE});
    all[3] = eglCreateContext(display_, config, EGL_NO_CONTEXT, version.data());
    for (const std::size_t surface : {1, 2})
        if (kind.hasSurfaces)
            all[surface] = eglCreatePbufferSurface(display_, config, nullptr);
    makeCurrent();
}

HostContext::~HostContext() {
    release();
    eglDestroyContext(display_, all[3]);
    for (const std::size_t surface : {1, 2})
        if (all[surface] != EGL_NO_SURFACE)
            eglDestroySurface(display_, all[surface]);
    eglBindAPI(EGL_OPENGL_ES_API);
}

void HostContext::makeCurrent() const {
    EXPECT_TRUE(eglMakeCurrent(display_, all[1], all[2], all[3]));
}

void HostContext::release() const {
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

bool HostContext::isApiBound() const {
    return eglQueryAPI() == kind_.api;
}

#endif
