// Text from files and drivers on its way to a terminal.
#pragma once

#include <string>

namespace pbhost {

// The text without characters that would steer the terminal: all control characters but line ends
// and tabs become blanks.
std::string printable(std::string text);

} // namespace pbhost
