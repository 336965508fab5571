// Formatting of JSON output: fields keep their order, floats have as many digits as needed.
#pragma once

#include <nlohmann/json.hpp>

namespace pbhost {

using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

// Indented, with a line end. Incomplete UTF-8 sequences are replaced.
inline std::string jsonText(const auto& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace pbhost
