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
    PIXELFORMATDESCRIPTOR wish{};
    wish.nSize = sizeof(wish);
    wish.nVersion = 1;
    wish.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
    wish.cColorBits = 24;
    EXPECT_TRUE(SetPixelFormat(deviceContext, ChoosePixelFormat(deviceContext, &wish), &wish));
    place_ = window;
    all = {deviceContext, wglCreateContext(deviceContext)};
    makeCurrent();
}

HostContext::~HostContext() {
    release();
    wglDeleteContext(static_cast<HGLRC>(all[1]));
    ReleaseDC(static_cast<HWND>(place_), static_cast<HDC>(all[0]));
    DestroyWindow(static_cast<HWND>(place_));
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
    place_ = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    all[0] = place_;
    EXPECT_TRUE(eglInitialize(place_, nullptr, nullptr));
    const EGLint renderable = kind.api == EGL_OPENGL_API ? EGL_OPENGL_BIT : EGL_OPENGL_ES2_BIT;
    const auto wish = std::to_array<EGLint>(
        {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, renderable, EGL_NONE});
    EGLConfig config = nullptr;
    EGLint count = 0;
    EXPECT_TRUE(eglChooseConfig(place_, wish.data(), &config, 1, &count));
    eglBindAPI(kind.api);
    const auto version = std::to_array<EGLint>({EGL_CONTEXT_MAJOR_VERSION, 2, EGL_NONE});
    all[3] = eglCreateContext(place_, config, EGL_NO_CONTEXT, version.data());
    for (const std::size_t surface : {1, 2})
        if (kind.hasSurfaces)
            all[surface] = eglCreatePbufferSurface(place_, config, nullptr);
    makeCurrent();
}

HostContext::~HostContext() {
    release();
    eglDestroyContext(place_, all[3]);
    for (const std::size_t surface : {1, 2})
        if (all[surface] != EGL_NO_SURFACE)
            eglDestroySurface(place_, all[surface]);
    eglBindAPI(EGL_OPENGL_ES_API);
}

void HostContext::makeCurrent() const {
    EXPECT_TRUE(eglMakeCurrent(place_, all[1], all[2], all[3]));
}

void HostContext::release() const {
    eglMakeCurrent(place_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

bool HostContext::isApiBound() const {
    return eglQueryAPI() == kind_.api;
}

#endif
