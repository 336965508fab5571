#include "support/numbers.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

std::int32_t clamped(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

constexpr bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The notation of a number's digits and exponent.
struct Notation {
    std::chars_format format;
    const char* exponentMarks;
    const char* nonZeroDigits;
    std::int64_t digitWeight; // by how much a digit changes the exponent
};
constexpr Notation decimal = {std::chars_format::general, "eE", "123456789", 1};
constexpr Notation hexadecimal = {std::chars_format::hex, "pP", "123456789abcdefABCDEF", 4};

// Whether a number that a float cannot represent is too large, not too small: decided by the
// position of its first nonzero digit.
bool isTooLarge(std::string_view number, const Notation& notation) {
    const std::size_t mark = std::min(number.find_first_of(notation.exponentMarks), number.size());
    const std::string_view digits = number.substr(0, mark);
    const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
    // Without such a digit (the text begins with a sign): -1 for every size of std::size_t.
    const auto first = static_cast<std::ptrdiff_t>(digits.find_first_of(notation.nonZeroDigits));
    std::string_view exponent = number.substr(std::min(mark + 1, number.size()));
    const bool isNegated = exponent.starts_with('-');
    if (exponent.starts_with('+') || isNegated)
        exponent.remove_prefix(1);
    return (point - first) * notation.digitWeight + leadingInteger(exponent, isNegated) > 0;
}

constexpr float largestFloat = std::numeric_limits<float>::max();

// The characters that can be part of a number, at the start of a zero-terminated text: the time
// must not depend on the rest of the text.
std::string_view numberLike(const char* text) {
    const char* end = text;
    while (std::isalnum(static_cast<unsigned char>(*end)) != 0 ||
           (*end != '\0' && std::strchr("+-._()", *end) != nullptr))
        ++end;
    return {text, static_cast<std::size_t>(end - text)};
}

// Whether the text begins with a hexadecimal prefix and a digit.
bool isHexadecimal(const char* text) {
    const auto isDigit = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    return text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
           (isDigit(text[2]) || (text[2] == '.' && isDigit(text[3])));
}

// Reads the unsigned number at the start of text and returns its end; null if there is none.
const char* readUnsigned(const char* text, float& value) {
    if (*text == '-') // a second sign
        return nullptr;
    const bool isHex = isHexadecimal(text);
    const std::string_view number = numberLike(isHex ? text + 2 : text);
    const Notation& notation = isHex ? hexadecimal : decimal;
    const char* end = number.data() + number.size();
    const auto result = std::from_chars(number.data(), end, value, notation.format);
    if (result.ec == std::errc::invalid_argument)
        return nullptr;
    const std::string_view read(number.data(),
                                static_cast<std::size_t>(result.ptr - number.data()));
    if (result.ec == std::errc::result_out_of_range)
        value = isTooLarge(read, notation) ? largestFloat : 0.0F;
    return result.ptr;
}

} // namespace

std::int32_t leadingInteger(std::string_view text, bool isNegated) {
    std::int64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        value = std::numeric_limits<std::int64_t>::max();
    if (isNegated)
        value = -value;
    return clamped(value);
}

float leadingFloat(std::string_view text) {
    float value = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (result.ec != std::errc::result_out_of_range)
        return value;
    const std::string_view number = text.substr(0, text.find_first_not_of("0123456789."));
    return isTooLarge(number, decimal) ? largestFloat : 0.0F;
}

bool scanInteger(const char*& text, std::int32_t& value) {
    char* end = nullptr;
    const long long number = std::strtoll(text, &end, 10);
    if (end == text)
        return false;
    value = clamped(number);
    text = end;
    return true;
}

bool scanFloat(const char*& text, float& value) {
    const char* start = text;
    while (isBlank(*start))
        ++start;
    const bool isNegated = *start == '-';
    if (isNegated || *start == '+')
        ++start;
    float number = 0;
    const char* end = readUnsigned(start, number);
    if (end == nullptr)
        return false;
    value = std::copysign(std::isinf(number) ? largestFloat : number, isNegated ? -1.0F : 1.0F);
    text = end;
    return true;
}
