// Numbers in text, read with `.` as the decimal point in every locale, and clamped to their range
// instead of overflowing.
#pragma once

#include <cstdint>
#include <string_view>

// The decimal integer at the start of text, negated if requested; 0 if there is no digit.
std::int32_t leadingInteger(std::string_view text, bool isNegated = false);

// The decimal number at the start of text, without sign and exponent; 0 if there is none.
float leadingFloat(std::string_view text);

// The next number of a zero-terminated text, by the rules of scanf's %d and %f: leading blanks are
// skipped, a sign and an exponent are accepted. Advances `text` past it and returns true, or
// changes neither argument.
bool scanInteger(const char*& text, std::int32_t& value);
bool scanFloat(const char*& text, float& value);
