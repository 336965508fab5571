// Text from files and drivers on its way to a terminal, and from the command line on its way to the
// effect.
#pragma once

#include <string>
#include <string_view>

namespace pbhost {

// The text without characters that would steer the terminal: all control characters but line ends
// and tabs become blanks.
std::string printable(std::string text);

// The effect and JSON know no other texts; a file's name may be any bytes.
bool isUtf8(std::string_view text);

} // namespace pbhost
