// The bounded expansion of a message, shared by all that print in printf's way.
#pragma once

#include <array>
#include <cstdarg>

using MessageText = std::array<char, 1024>; // with the final zero

// Expands as far as there is room. False, and no text, when the format itself has 1024 bytes or
// more.
[[gnu::format(printf, 2, 0)]] bool expandMessage(MessageText& text, const char* format,
                                                 std::va_list arguments);
