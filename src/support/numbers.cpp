#include "support/numbers.h"

#include <locale.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

std::int32_t heldInRange(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

// The locale in which the decimal point is a point; lives as long as the module.
locale_t pointLocale() {
    static const locale_t locale = newlocale(LC_NUMERIC_MASK, "C", nullptr);
    return locale;
}

} // namespace

std::int32_t leadingInteger(std::string_view text, bool isNegated) {
    std::int64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        value = std::numeric_limits<std::int64_t>::max();
    if (isNegated)
        value = -value;
    return heldInRange(value);
}

float leadingFloat(std::string_view text) {
    float value = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (result.ec != std::errc::result_out_of_range)
        return value;
    // Without an exponent only digits in front of the point can make a number too large.
    const std::string_view whole = text.substr(0, text.find('.'));
    const bool isLarge = whole.find_first_of("123456789") != std::string_view::npos;
    return isLarge ? std::numeric_limits<float>::max() : 0.0F;
}

bool scanInteger(const char*& text, std::int32_t& value) {
    char* end = nullptr;
    const long long number = std::strtoll(text, &end, 10);
    if (end == text)
        return false;
    value = heldInRange(number);
    text = end;
    return true;
}

bool scanFloat(const char*& text, float& value) {
    char* end = nullptr;
    const float number = strtof_l(text, &end, pointLocale());
    if (end == text)
        return false;
    constexpr float largest = std::numeric_limits<float>::max();
    value = std::isinf(number) ? std::copysign(largest, number) : number;
    text = end;
    return true;
}
