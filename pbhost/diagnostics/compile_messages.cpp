#include "pbhost/diagnostics/compile_messages.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "support/outcome_texts.h"

namespace pbhost {

namespace {

struct Place {
    std::size_t line; // from 1
    std::string_view message;
};

// Drivers write "0:12(3): error: …", "0(12) : error …" or "ERROR: 0:12: …".
std::optional<Place> findPlace(std::string_view logLine) {
    for (const std::string_view grade : {"ERROR: ", "WARNING: "})
        if (logLine.starts_with(grade))
            logLine.remove_prefix(grade.size());
    const char* const end = logLine.data() + logLine.size();
    unsigned text = 0; // a shader has only one
    const auto [colon, textError] = std::from_chars(logLine.data(), end, text);
    if (textError != std::errc() || colon == end || (*colon != ':' && *colon != '('))
        return std::nullopt;
    Place place{};
    const auto [behind, lineError] = std::from_chars(colon + 1, end, place.line);
    if (lineError != std::errc())
        return std::nullopt;
    logLine.remove_prefix(static_cast<std::size_t>(behind - logLine.data()));
    logLine.remove_prefix(std::min(logLine.find(' '), logLine.size()));
    place.message = logLine.substr(std::min(logLine.find_first_not_of(" :"), logLine.size()));
    return place;
}

// The line trimmed and cut to a length that can be shown, because an input file may contain
// anything.
std::string shown(std::string_view line) {
    constexpr std::size_t longest = 200;
    const std::size_t start = line.find_first_not_of(" \t\r");
    std::string text(start == std::string_view::npos ? std::string_view() : line.substr(start));
    return text.size() <= longest ? text : text.substr(0, longest) + "...";
}

bool isWarning(std::string_view logLine) {
    return std::min(logLine.find("warning"), logLine.find("WARNING")) <
           std::min(logLine.find("error"), logLine.find("ERROR"));
}

bool isError(std::string_view logLine) {
    return !logLine.empty() && !isWarning(logLine);
}

const char* stageName(char stage) {
    return stage == 'v' ? "vertex" : stage == 'f' ? "fragment" : "link";
}

constexpr std::size_t tagLength = std::string_view(vertexTag).size();

// Position of the next entry's stage tag; npos: none.
std::size_t findTag(std::string_view log) {
    std::size_t first = std::string_view::npos;
    for (const std::string_view tag : {vertexTag, fragmentTag, linkTag})
        first = std::min(first, log.find(tag));
    return first;
}

class Description {
public:
    void add(const CompileFailure& failure, const std::optional<ProgramTexts>& texts) {
        std::vector<std::string_view> source;
        if (texts && failure.stage != 'l')
            source = splitLines(failure.stage == 'v' ? texts->vertex : texts->fragment);
        // Warnings about the generated text are not helpful, so only errors are shown, unless the
        // log contains none.
        const auto lines = splitLines(failure.log);
        const bool hasError = std::any_of(lines.begin(), lines.end(), isError);
        for (const std::string_view line : lines)
            if (!hasError || isError(line))
                addLine(failure, shown(line), source);
    }

    std::string text;

private:
    void addLine(const CompileFailure& failure, const std::string& line,
                 const std::vector<std::string_view>& source) {
        const auto place = findPlace(line);
        const bool hasSource = place && place->line >= 1 && place->line <= source.size();
        const std::string quoted = hasSource ? shown(source[place->line - 1]) : "";
        std::string key = failure.name + '\n';
        key.append(place ? place->message : line).append("\n").append(quoted);
        if (line.empty() || !seen_.insert(key).second)
            return;
        text.append("  ").append(failure.name).append(failure.name.empty() ? "" : ", ");
        text.append(stageName(failure.stage));
        text.append(": ").append(line).append("\n");
        if (!quoted.empty())
            text.append("      ").append(quoted).append("\n");
    }

    std::set<std::string> seen_;
};

} // namespace

std::vector<CompileFailure> readErrorLog(std::string_view log) {
    for (std::size_t line = 0; line < errorLogHeading.size(); ++line)
        log.remove_prefix(std::min(log.find('\n'), log.size() - 1) + 1);
    std::vector<CompileFailure> failures;
    for (std::size_t tag = findTag(log); tag != std::string_view::npos; tag = findTag(log)) {
        // The name of the next entry is the text between the empty line and its tag.
        const std::string_view rest = log.substr(tag + tagLength);
        const std::size_t nextTag = findTag(rest);
        const std::size_t end = nextTag == std::string_view::npos
                                    ? rest.size()
                                    : rest.substr(0, nextTag).rfind("\n\n") + 2;
        failures.push_back(
            {std::string(log.substr(0, tag)), log[tag + 1], std::string(rest.substr(0, end))});
        log = rest.substr(end);
    }
    return failures;
}

std::string describe(const std::vector<CompileFailure>& failures, const FindTexts& findTexts) {
    Description description;
    for (const CompileFailure& failure : failures)
        description.add(failure, findTexts(failure.name));
    return description.text;
}

} // namespace pbhost
