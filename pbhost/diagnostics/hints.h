// What a kernel or graph lacks to be one, in the words of its language.
//
// The front end takes any text and the GLSL compiler complains about what comes of it; a hint names
// the cause. Each is a line of its own, indented; there is none where nothing is known to be wrong.
#pragma once

#include <string>

#include "pixelbender/model.h"

namespace pbhost {

std::string hintsFor(const pbKernelInfo& kernel);
std::string hintsFor(const pbGraphInfo& graph);

} // namespace pbhost
