// Text between the system's calls, which speak UTF-16, and POSIX, which takes bytes of UTF-8.
//
// Nothing is dropped in silence: half of a surrogate pair, or a byte that belongs to no character,
// comes as "?", and the result says so.
#pragma once

#include <string>
#include <string_view>

namespace platform {

template<class Text>
struct Converted {
    Text text;
    bool isExact; // no "?" stands for something else
};

Converted<std::string> toUtf8(std::u16string_view text);
Converted<std::u16string> toUtf16(std::string_view text);

} // namespace platform
