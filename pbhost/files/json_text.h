// JSON as the program writes it: the fields in their order, and floats with the digits that a float
// has.
#pragma once

#include <nlohmann/json.hpp>

namespace pbhost {

using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

// Indented, with a line end. Texts that were cut within a character are mended.
inline std::string jsonText(const auto& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace pbhost
