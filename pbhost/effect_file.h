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

// Both throw Failure when the file cannot be read. A file that reads, but is no kernel or graph,
// gives a thin model: what is wrong with it shows when it is compiled.
void readKernelFile(const std::string& path, pbKernelInfo& kernel);
void readGraphFile(const std::string& path, pbGraphInfo& graph);

} // namespace pbhost
