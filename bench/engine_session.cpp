#include "bench/engine_session.h"

#include <GL/glew.h>

#include <stdexcept>

#include "gpu/features.h"

namespace bench {

EngineSession::EngineSession() {
    setDeviceName("Benchmark");
    createDevice(device_.glWindow, device_.glDeviceContext, device_.glRenderContext);
    wglMakeCurrent(device_.glDeviceContext, device_.glRenderContext);
    glewInit(); // its result says nothing here: it misses a display that nobody needs
    if (const char* missing = missingFeature()) {
        destroyDevice(device_.glWindow, device_.glDeviceContext, device_.glRenderContext);
        throw std::runtime_error(std::string("OpenGL cannot be used here, it lacks ") + missing);
    }
}

EngineSession::~EngineSession() {
    wglMakeCurrent(nullptr, nullptr);
    destroyDevice(device_.glWindow, device_.glDeviceContext, device_.glRenderContext);
}

} // namespace bench
