// Tells whether the effect has written its frame. It answers 0 also where it has not, and what lies
// in the buffer then would pass for a picture.
#pragma once

#include <optional>

#include "hostkit/project/project.h"

namespace pbhost {

// Fills the pixels with numbers that no picture has by accident, other ones in each row.
void fillUnwritten(hostkit::World& world);

// The first row that still holds nothing but what fillUnwritten put there.
std::optional<int> unwrittenRow(const hostkit::World& world);

} // namespace pbhost
