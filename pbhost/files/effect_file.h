// A kernel or graph file and its model.
#pragma once

#include <string>

#include "command/command_scope.h"
#include "hostkit/host.h"
#include "pixelbender/model.h"

namespace pbhost {

// Whether the name has the extension .pbk or .pbg, in any case.
bool namesEffectFile(const std::string& path);

// True for a graph (.pbg), false for a kernel (.pbk), by the extension. Throws Failure for any
// other name.
bool isGraphFile(const std::string& path);

// Throws Failure unless the file can be read and has a name that isGraphFile and the effect accept.
void requireReadable(const std::string& path);

// The model of a file; only one of the two is filled. Keeps a command running, because models and
// generated texts are allocated on the host's heap.
class EffectFile {
public:
    // Throws Failure if the file cannot be read. A readable file that is not a kernel or graph
    // gives an incomplete model; its errors show when it is compiled.
    EffectFile(hostkit::Host& host, const std::string& path);
    // The model of a text that the file with this name is going to have.
    EffectFile(hostkit::Host& host, const std::string& path, std::string fileText);

    const bool isGraph;
    const std::string text; // of the file

private:
    const CommandScope command_; // declared before the models: destroyed after them

public:
    pbGraphInfo graph;
    pbKernelInfo kernel;
};

} // namespace pbhost
