// The engine, ready to build and run graphs beside a substitute host: a running command, and the
// engine's OpenGL device, current for as long as the session stands.
#pragma once

#include "command/command_scope.h"
#include "gpu/device.h"
#include "hostkit/host.h"

namespace bench {

class EngineSession {
public:
    // Throws std::runtime_error when OpenGL cannot do what the engine needs.
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
