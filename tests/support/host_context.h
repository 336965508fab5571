// A host that uses OpenGL through EGL on its own, as the process around the module does: what is
// current on its thread, and a context to have current.
#pragma once

#include <array>

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

// Display, surfaces to draw to and to read from, context: as EGL itself says.
using CurrentContext = std::array<void*, 4>;
CurrentContext currentContext();

// A context for any API, with two surfaces or none. Current from the start; nothing is current
// behind it.
class HostContext {
public:
    HostContext(EGLenum api, bool hasSurfaces);
    ~HostContext();
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    void makeCurrent() const;

    const EGLDisplay display =
        eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    CurrentContext all{display};
};
