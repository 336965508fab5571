// The bounded expansion of a message, shared by the functions that print with printf formats.
#pragma once

#include <array>
#include <cstdarg>

using MessageText = std::array<char, 1024>; // with the terminating zero

// Cuts the expansion at 1023 bytes. Returns false, with an empty text, if the format itself has
// 1024 bytes or more.
[[gnu::format(printf, 2, 0)]] bool expandMessage(MessageText& text, const char* format,
                                                 std::va_list arguments);
