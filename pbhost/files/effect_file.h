// A kernel or graph file, read into the model.
#pragma once

#include <string>

#include "command/command_scope.h"
#include "hostkit/host.h"
#include "pixelbender/model.h"

namespace pbhost {

// Whether the name ends in .pbk or .pbg, in any case.
bool namesEffectFile(const std::string& path);

// True for a graph (.pbg), false for a kernel (.pbk), by the name's ending. Throws Failure for any
// other.
bool isGraphFile(const std::string& path);

// Throws Failure unless the file is there and can be read, with a name that isGraphFile and the
// effect take.
void requireReadable(const std::string& path);

// The model of a file; of the two only one is filled. Models and generated texts stand on the
// host's heap: a command runs for as long as this lives.
class EffectFile {
public:
    // Throws Failure when the file cannot be read. A file that reads, but is no kernel or graph,
    // gives a thin model: what is wrong with it shows when it is compiled.
    EffectFile(hostkit::Host& host, const std::string& path);

    const bool isGraph;

private:
    const CommandScope command_; // before the models, which need it to the last

public:
    pbGraphInfo graph;
    pbKernelInfo kernel;
};

} // namespace pbhost
