#include "hostkit/services/json_errors.h"

#include <string_view>

namespace hostkit {

namespace {

// The part of a text between two marks; empty if they are not there.
std::string between(std::string_view text, std::string_view before, std::string_view behind) {
    const std::size_t start = text.find(before);
    if (start == std::string_view::npos)
        return "";
    text.remove_prefix(start + before.size());
    return std::string(text.substr(0, text.find(behind)));
}

} // namespace

// Messages begin with "[json.exception.KIND.NUMBER] ".
std::string plainJsonError(const nlohmann::json::exception& error) {
    constexpr int keyNotFound = 403, wrongType = 302;
    const std::string_view text = error.what();
    const std::string place = between(text, "parse error at ", ":");
    if (!place.empty())
        return place + ": this is not JSON";
    if (error.id == keyNotFound)
        return "\"" + between(text, "key '", "'") + "\" is missing";
    if (error.id == wrongType)
        return "a value is of type " + between(text, "but is ", "\n") + " instead of " +
               between(text, "type must be ", ",");
    const std::size_t end = text.find("] ");
    return std::string(end == std::string_view::npos ? text : text.substr(end + 2));
}

} // namespace hostkit
