// Words of GLSL that a kernel cannot use as a name, although they mean nothing to it.
#pragma once

#include <string_view>

namespace pbhost {

// Words that GLSL 1.20 reserves for the future, and those that later versions have added, which
// drivers reject in every version.
bool isReservedWord(std::string_view word);

} // namespace pbhost
