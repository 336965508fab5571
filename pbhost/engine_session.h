// The engine, ready to build and run graphs: a running command and the OpenGL device, current for
// as long as the session stands.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/pb_graph.h"
#include "gpu/device.h"
#include "pbhost/command.h"

namespace pbhost {

// A graph that can be rendered, and what it said on the way that is no reason to stop.
struct LoadedGraph {
    std::unique_ptr<pbGraph> graph;
    std::string warnings; // lines for standard error
};

class EngineSession {
public:
    // Throws Failure (RenderFailed) when OpenGL cannot do what the engine needs.
    EngineSession();
    ~EngineSession();
    EngineSession(const EngineSession&) = delete;
    EngineSession& operator=(const EngineSession&) = delete;

    // Reads and builds a kernel or graph file. The graph must go before the session. Throws Failure
    // (BadKernel), with the driver's log where a program did not compile.
    LoadedGraph load(const std::string& path);

private:
    Command command_;
    Device device_;
    std::unique_ptr<ContextSwitch> current_;
};

} // namespace pbhost
