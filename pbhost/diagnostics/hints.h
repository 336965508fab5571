// Hints about what a kernel or graph is missing.
//
// The parser accepts any text, and errors show only as messages of the GLSL compiler; a hint names
// the cause. Each is one indented line; there is none if no cause is found.
#pragma once

#include <string>

#include "pixelbender/model.h"

namespace pbhost {

std::string hintsFor(const pbKernelInfo& kernel);
std::string hintsFor(const pbGraphInfo& graph);

} // namespace pbhost
