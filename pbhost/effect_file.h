// A kernel or graph file, read into the model.
//
// The models stand on the host's heap: a command must run for as long as one of them lives.
#pragma once

#include <string>

#include "pixelbender/model.h"

namespace pbhost {

// True for a graph (.pbg), false for a kernel (.pbk), by the last letter in either case. Throws
// Failure for any other.
bool isGraphFile(const std::string& path);

// Throws Failure unless the file is there and can be read, with a name that isGraphFile takes.
void requireReadable(const std::string& path);

// Both throw Failure when the file cannot be read. A file that reads, but is no kernel or graph,
// gives a thin model: what is wrong with it shows when it is compiled.
void readKernelFile(const std::string& path, pbKernelInfo& kernel);
void readGraphFile(const std::string& path, pbGraphInfo& graph);

} // namespace pbhost
