// Texts between UTF-8, UTF-16 and what the script interpreter keeps inside. Whatever is no proper
// sequence becomes U+FFFD; nothing here fails.
#pragma once

#include <string>
#include <string_view>

namespace hostkit {

std::u16string toUtf16(std::string_view utf8);
std::string toUtf8(std::u16string_view utf16);
std::string latin1ToUtf8(std::string_view latin1);

// CESU-8: characters above U+FFFF stand as two surrogates of three bytes each.
std::string toCesu8(std::string_view utf8);
std::string fromCesu8(std::string_view cesu8);

// What a person typed and what is meant: the same text, or the same but for the case of letters.
bool areEqual(std::string_view typed, std::string_view meant);
bool areAlike(std::string_view typed, std::string_view meant);

} // namespace hostkit
