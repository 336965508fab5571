// Formatting of JSON output: fields keep their order, floats have as many digits as needed. And the
// whole numbers of JSON input.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace pbhost {

using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

// Indented, with a line end. Incomplete UTF-8 sequences are replaced.
inline std::string jsonText(const auto& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// Throws std::invalid_argument for a fraction and a number that `Number` cannot hold, whose
// conversion by the library would be undefined, and the library's exception if it is no number.
template<std::integral Number>
Number wholeNumber(const auto& json) {
    constexpr double mostExact = 9007199254740992; // 2^53
    const auto value = json.template get<double>();
    if (!(std::abs(value) <= mostExact) || value != std::trunc(value) ||
        !std::in_range<Number>(static_cast<std::int64_t>(value)))
        throw std::invalid_argument(json.dump() + " is not a valid whole number");
    return static_cast<Number>(value);
}

// The same for a field, or `otherwise` if there is none.
template<std::integral Number>
Number wholeNumber(const auto& json, const char* field, Number otherwise) {
    const auto found = json.find(field);
    return found == json.end() ? otherwise : wholeNumber<Number>(*found);
}

} // namespace pbhost
