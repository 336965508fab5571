// Conversion between UTF-8, UTF-16 and the script interpreter's CESU-8. Malformed sequences become
// U+FFFD; no function fails.
#pragma once

#include <string>
#include <string_view>

namespace hostkit {

std::u16string toUtf16(std::string_view utf8);
std::string toUtf8(std::u16string_view utf16);
std::string latin1ToUtf8(std::string_view latin1);

// CESU-8 encodes characters above U+FFFF as two surrogates of three bytes each.
std::string toCesu8(std::string_view utf8);
std::string fromCesu8(std::string_view cesu8);

// Compare a user's input with an expected text: exactly, or ignoring the case of ASCII letters.
bool areEqual(std::string_view typed, std::string_view meant);
bool areAlike(std::string_view typed, std::string_view meant);

} // namespace hostkit
