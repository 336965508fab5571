#include "pbhost/compile_messages.h"

#include <regex>
#include <set>

namespace pbhost {

namespace {

struct Place {
    std::size_t line; // from 1
    std::string message;
};

// Drivers write "0:12(3): error: …", "0(12) : error …" or "ERROR: 0:12: …".
std::optional<Place> findPlace(const std::string& logLine) {
    static const std::regex form(R"(^(?:ERROR: |WARNING: )?\d+(?::(\d+)|\((\d+)\))[^ ]* ?:? ?(.*)$)");
    std::smatch parts;
    if (!std::regex_match(logLine, parts, form))
        return std::nullopt;
    const std::string digits = parts[1].matched ? parts[1].str() : parts[2].str();
    if (digits.size() > 9)
        return std::nullopt;
    return Place{std::stoul(digits), parts[3].str()};
}

std::string trimmed(std::string_view line) {
    const std::size_t start = line.find_first_not_of(" \t\r");
    return std::string(start == std::string_view::npos ? std::string_view() : line.substr(start));
}

const char* stageName(char stage) {
    return stage == 'v' ? "vertex" : stage == 'f' ? "fragment" : "link";
}

class Description {
public:
    void add(const CompileFailure& failure, const std::optional<ProgramTexts>& texts) {
        std::vector<std::string_view> source;
        if (texts && failure.stage != 'l')
            source = splitLines(failure.stage == 'v' ? texts->vertex : texts->fragment);
        for (const std::string_view line : splitLines(failure.log))
            addLine(failure, std::string(line), source);
    }

    std::string text;

private:
    void addLine(const CompileFailure& failure, const std::string& line,
                 const std::vector<std::string_view>& source) {
        const auto place = findPlace(line);
        const bool hasSource = place && place->line >= 1 && place->line <= source.size();
        const std::string quoted = hasSource ? trimmed(source[place->line - 1]) : "";
        const std::string key = failure.name + '\n' + (place ? place->message : line) + '\n' + quoted;
        if (line.empty() || !seen_.insert(key).second)
            return;
        text.append("  ").append(failure.name).append(", ").append(stageName(failure.stage));
        text.append(": ").append(line).append("\n");
        if (!quoted.empty())
            text.append("      ").append(quoted).append("\n");
    }

    std::set<std::string> seen_;
};

} // namespace

CompileFailure readErrorLogEntry(const std::string& entry) {
    // "name(v)\n", then the log.
    const std::size_t lineEnd = entry.find('\n');
    if (lineEnd == std::string::npos || lineEnd < 3)
        return {"", 'l', entry};
    return {entry.substr(0, lineEnd - 3), entry[lineEnd - 2], entry.substr(lineEnd + 1)};
}

std::string describe(const std::vector<CompileFailure>& failures, const FindTexts& findTexts) {
    Description description;
    for (const CompileFailure& failure : failures)
        description.add(failure, findTexts(failure.name));
    return description.text;
}

} // namespace pbhost
