#include "tests/support/host_context.h"

#include <gtest/gtest.h>

CurrentContext currentContext() {
    return {eglGetCurrentDisplay(), eglGetCurrentSurface(EGL_DRAW), eglGetCurrentSurface(EGL_READ),
            eglGetCurrentContext()};
}

HostContext::HostContext(EGLenum api, bool hasSurfaces) {
    EXPECT_TRUE(eglInitialize(display, nullptr, nullptr));
    const EGLint kind = api == EGL_OPENGL_API ? EGL_OPENGL_BIT : EGL_OPENGL_ES2_BIT;
    const auto wish = std::to_array<EGLint>(
        {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, kind, EGL_NONE});
    EGLConfig config = nullptr;
    EGLint count = 0;
    EXPECT_TRUE(eglChooseConfig(display, wish.data(), &config, 1, &count));
    eglBindAPI(api);
    const auto version = std::to_array<EGLint>({EGL_CONTEXT_MAJOR_VERSION, 2, EGL_NONE});
    all[3] = eglCreateContext(display, config, EGL_NO_CONTEXT, version.data());
    for (const std::size_t surface : {1, 2})
        if (hasSurfaces)
            all[surface] = eglCreatePbufferSurface(display, config, nullptr);
    makeCurrent();
}

HostContext::~HostContext() {
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display, all[3]);
    for (const std::size_t surface : {1, 2})
        if (all[surface] != EGL_NO_SURFACE)
            eglDestroySurface(display, all[surface]);
    eglBindAPI(EGL_OPENGL_ES_API);
}

void HostContext::makeCurrent() const {
    EXPECT_TRUE(eglMakeCurrent(display, all[1], all[2], all[3]));
}
