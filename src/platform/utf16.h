// Converts text between UTF-16, which Windows functions use, and UTF-8, which POSIX uses.
//
// Half of a surrogate pair, or an invalid byte, becomes "?", and the result is then marked as not
// exact.
#pragma once

#include <string>
#include <string_view>

namespace platform {

template<class Text>
struct Converted {
    Text text;
    bool isExact; // nothing was replaced by "?"
};

Converted<std::string> toUtf8(std::u16string_view text);
Converted<std::u16string> toUtf16(std::string_view text);

} // namespace platform
