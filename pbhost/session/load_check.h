// Whether the effect could load its file, and what to tell the user when it could not.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "hostkit/effect/effect.h"
#include "pbhost/diagnostics/wiring.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/session.h"

namespace pbhost {

// Whether the instance runs a graph; else its title says so.
bool hasGraph(const hostkit::Effect& effect);

// Why the instance has no graph: what the effect said, and what the file lacks to be one.
// `shownName` is the user's name for what was to be loaded, `file` the kernel or graph itself; it
// need not be there.
Failure cannotBeRun(hostkit::Host& host, const std::string& shownName, const std::string& file,
                    const std::vector<std::string>& messages);

// What the effect said about a graph that it runs, as lines for standard error. Throws Failure
// (BadKernel), with the driver's log, when a program of the graph does not compile or link. A node
// without a kernel is for warningsOfWiring.
std::string warningsOfLoad(Session& session, const std::string& file,
                           const std::vector<std::string>& messages);

// What is told of a file besides what the effect says, read once.
struct FileFacts {
    std::size_t inputs; // that it takes, which may be more than the effect can feed
    WiringFaults wiring;
};
FileFacts readFacts(hostkit::Host& host, const std::string& file);

// What the engine passes over in a graph, as lines for standard error. Throws Failure (BadKernel),
// with all of them, when one makes the picture wrong for certain, or when the caller is strict and
// there is any.
std::string warningsOfWiring(const std::string& shownName, const WiringFaults& faults,
                             bool isStrict);

} // namespace pbhost
