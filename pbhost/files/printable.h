// Checks of texts: from files and drivers before they are printed, from the command line before
// they are passed to the effect.
#pragma once

#include <string>
#include <string_view>

namespace pbhost {

// Replaces control characters other than line ends and tabs by blanks, so that the text cannot
// control the terminal.
std::string printable(std::string text);

// The effect and JSON accept only UTF-8, but a file name may contain any bytes.
bool isUtf8(std::string_view text);

} // namespace pbhost
