// The engine with a substitute host: a running command, and the engine's OpenGL device, which is
// current for the lifetime of the session.
#pragma once

#include "command/command_scope.h"
#include "gpu/device.h"
#include "hostkit/host.h"

namespace bench {

class EngineSession {
public:
    // Throws std::runtime_error if OpenGL lacks something that the engine needs.
    EngineSession();
    ~EngineSession() { wglMakeCurrent(nullptr, nullptr); }
    EngineSession(const EngineSession&) = delete;
    EngineSession& operator=(const EngineSession&) = delete;

private:
    hostkit::Host host_;
    CommandScope scope_{0, 0, host_.inData()};
    OwnDevice device_{"Benchmark"};
};

} // namespace bench
