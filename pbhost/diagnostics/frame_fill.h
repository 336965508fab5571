// Detects an output that the effect has not written. The render commands return 0 even then, and
// the old content of the buffer would be saved as a picture.
#pragma once

#include <optional>

#include "hostkit/project/project.h"

namespace pbhost {

// Fills the pixels with pseudo-random numbers, different in each row.
void fillUnwritten(hostkit::World& world);

// The first row that still contains only the numbers of fillUnwritten.
std::optional<int> unwrittenRow(const hostkit::World& world);

} // namespace pbhost
