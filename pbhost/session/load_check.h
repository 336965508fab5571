// Checks whether the effect could load its file, and explains failures.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "hostkit/effect/effect.h"
#include "pbhost/diagnostics/wiring.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/session.h"

namespace pbhost {

// Whether the instance has loaded a graph or kernel; if not, its title says so.
bool hasGraph(const hostkit::Effect& effect);

// The failure for an instance without a graph: the effect's messages, and hints about the file.
// `shownName` is the user's name of the input, `file` the kernel or graph itself, which may be
// missing.
Failure cannotBeRun(hostkit::Host& host, const std::string& shownName, const std::string& file,
                    const std::vector<std::string>& messages);

// The effect's messages about a loaded graph, as lines for standard error. Throws Failure
// (BadKernel), with the driver's log, if a program does not compile or link. Nodes without a kernel
// are reported by warningsOfWiring.
std::string warningsOfLoad(Session& session, const std::string& file,
                           const std::vector<std::string>& messages);

// Facts about a file that the effect does not report.
struct FileFacts {
    std::size_t inputs; // inputs of the kernel or graph, which may exceed the effect's limit
    WiringFaults wiring;
};
FileFacts readFacts(hostkit::Host& host, const std::string& file);

// The warnings about a graph's wiring, as lines for standard error. Throws Failure (BadKernel) with
// all messages if there is an error, or, when strict, a warning.
std::string warningsOfWiring(const std::string& shownName, const WiringFaults& faults,
                             bool isStrict);

} // namespace pbhost
