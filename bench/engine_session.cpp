#include "bench/engine_session.h"

#include <GL/glew.h>

#include <stdexcept>

#include "gpu/features.h"

namespace bench {

EngineSession::EngineSession() {
    wglMakeCurrent(device_.glDeviceContext, device_.glRenderContext);
    glewInit(); // its result is wrong on EGL, where there is no GLX display
    if (const char* missing = missingFeature())
        throw std::runtime_error(std::string("OpenGL cannot be used here, it lacks ") + missing);
}

} // namespace bench
