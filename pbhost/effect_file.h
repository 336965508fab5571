// A kernel or graph file, read into the model.
//
// The models stand on the host's heap: a command must run for as long as one of them lives.
#pragma once

#include <string>

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

// The model of a file; of the two only one is filled.
struct EffectFile {
    // Throws Failure when the file cannot be read. A file that reads, but is no kernel or graph,
    // gives a thin model: what is wrong with it shows when it is compiled.
    explicit EffectFile(const std::string& path);

    bool isGraph;
    pbGraphInfo graph;
    pbKernelInfo kernel;
};

} // namespace pbhost
