// Numbers in text, read with `.` as the decimal point whatever the user's locale, and clamped to
// their range instead of overflowing.
#pragma once

#include <cstdint>
#include <string_view>

// The decimal integer at the start of text, negated if asked; 0 when no digit stands there.
std::int32_t leadingInteger(std::string_view text, bool isNegated = false);

// The decimal number at the start of text, without sign and exponent; 0 when there is none.
float leadingFloat(std::string_view text);

// The next number of a zero-terminated text, by the rules of scanf's %d and %f: blanks in front are
// skipped, a sign and an exponent are understood. Steps over it and gives true, or leaves both
// arguments alone.
bool scanInteger(const char*& text, std::int32_t& value);
bool scanFloat(const char*& text, float& value);
