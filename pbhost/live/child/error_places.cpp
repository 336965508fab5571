#include "pbhost/live/child/error_places.h"

#include <algorithm>
#include <optional>

namespace pbhost::live {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

// The position of the last quoted name, which is what a driver complains about: 'name' or `name'.
unsigned columnOf(std::string_view message, std::string_view line) {
    const std::size_t end = message.rfind('\'');
    const std::size_t start =
        end == std::string_view::npos || end == 0 ? end : message.find_last_of("`'", end - 1);
    if (start == std::string_view::npos || end <= start + 1)
        return 0;
    std::string_view name = message.substr(start + 1, end - start - 1);
    name = name.substr(0, name.find('('));
    const std::size_t at = name.empty() ? std::string_view::npos : line.find(name);
    return at == std::string_view::npos ? 0 : static_cast<unsigned>(at) + 1;
}

// The driver's words, behind "NAME, STAGE: 0:12(3): error: ".
std::string_view wordsOf(std::string_view message) {
    const std::size_t grade = message.find("error: ");
    return grade == std::string_view::npos ? trimmed(message) : message.substr(grade + 7);
}

std::optional<ErrorPlace> findPlace(std::string_view message, std::string_view quoted,
                                    const std::vector<std::string_view>& source) {
    const auto found = std::find_if(source.begin(), source.end(), [&](std::string_view line) {
        return !quoted.empty() && trimmed(line) == quoted;
    });
    if (found == source.end())
        return std::nullopt;
    return ErrorPlace{static_cast<unsigned>(found - source.begin()) + 1, columnOf(message, *found),
                      std::string(wordsOf(message))};
}

} // namespace

std::vector<ErrorPlace> errorPlaces(std::string_view message, std::string_view source) {
    constexpr std::string_view quoteIndent = "      ";
    const auto lines = linesOf(message);
    const auto sourceLines = linesOf(source);
    std::vector<ErrorPlace> places;
    for (std::size_t i = 1; i < lines.size(); ++i)
        if (lines[i].starts_with(quoteIndent))
            if (auto place = findPlace(lines[i - 1], trimmed(lines[i]), sourceLines))
                places.push_back(*place);
    return places;
}

} // namespace pbhost::live
