#include "pbhost/diagnostics/driver_log.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace pbhost {

namespace {

bool takePrefix(std::string_view& rest, std::string_view prefix) {
    if (!rest.starts_with(prefix))
        return false;
    rest.remove_prefix(prefix.size());
    return true;
}

std::optional<std::size_t> takeNumber(std::string_view& rest) {
    std::size_t number = 0;
    const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (read.ec != std::errc())
        return std::nullopt;
    rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()));
    return number;
}

void skipBlanksAndColons(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" :\t"), rest.size()));
}

// Takes the place in front of a message: "0:12(3)" with a column (Mesa), "0(12)" (NVIDIA), or
// "0:12" (AMD, Intel). The first number is that of the text; a shader has only one.
bool takePlace(std::string_view& rest, DriverMessage& message) {
    std::string_view at = rest;
    if (!takeNumber(at))
        return false;
    const bool hasColon = takePrefix(at, ":");
    if (!hasColon && !takePrefix(at, "("))
        return false;
    const auto line = takeNumber(at);
    if (!line)
        return false;
    if (hasColon && takePrefix(at, "("))
        message.column = takeNumber(at).value_or(0);
    message.line = *line;
    takePrefix(at, ")");
    skipBlanksAndColons(at);
    rest = at;
    return true;
}

// Takes the grade: "error:", "ERROR:", "preprocessor error:", "error C1008:", "warning:" ...
bool takeGrade(std::string_view& rest, DriverMessage& message) {
    constexpr std::array<std::pair<std::string_view, Severity>, 6> grades = {{
        {"error", Severity::Error},
        {"ERROR", Severity::Error},
        {"preprocessor error", Severity::Error},
        {"warning", Severity::Warning},
        {"WARNING", Severity::Warning},
        {"preprocessor warning", Severity::Warning},
    }};
    for (const auto& [word, severity] : grades) {
        std::string_view at = rest;
        if (!takePrefix(at, word))
            continue;
        const std::size_t colon = at.find(':');
        // Between the word and the colon there is at most a code of the driver.
        if (colon == std::string_view::npos || colon > 8)
            continue;
        at.remove_prefix(colon);
        skipBlanksAndColons(at);
        message.severity = severity;
        rest = at;
        return true;
    }
    return false;
}

DriverMessage parseLine(std::string_view line) {
    DriverMessage message;
    std::string_view rest = line;
    const bool isGradeFirst = takeGrade(rest, message);
    if (takePlace(rest, message) && !isGradeFirst)
        takeGrade(rest, message);
    message.text = rest;
    return message;
}

// A message about a value whose type is unknown because of another error.
bool isConsequence(std::string_view text) {
    constexpr std::array<std::string_view, 9> phrases = {
        "operands to ",    "operand to ",   "type mismatch",     "from a non-numeric data type",
        " must be scalar", "of type error", "cannot be indexed", "with wrong type error",
        "operands of ?:"};
    return std::any_of(phrases.begin(), phrases.end(), [&](std::string_view phrase) {
        return text.find(phrase) != std::string_view::npos;
    });
}

bool hasArgumentInError(std::string_view text) {
    return text.find("(error") != std::string_view::npos ||
           text.find(", error") != std::string_view::npos;
}

bool isRoot(std::string_view text) {
    return text.find("undeclared") != std::string_view::npos ||
           text.find("no function with name") != std::string_view::npos ||
           text.find("no matching function") != std::string_view::npos ||
           text.find("undefined variable") != std::string_view::npos;
}

// Drops the messages that follow from the one before. The driver writes a wrong operand before the
// expressions around it, which begin on its line or an earlier one.
class ConsequenceFilter {
public:
    bool drops(const DriverMessage& message) {
        const bool isDropped =
            hasArgumentInError(message.text) ||
            (isAfterRoot_ && message.line <= rootLine_ && isConsequence(message.text));
        if (!isDropped && message.severity == Severity::Error) {
            isAfterRoot_ = isRoot(message.text);
            rootLine_ = message.line;
        }
        return isDropped;
    }

private:
    bool isAfterRoot_ = false;
    std::size_t rootLine_ = 0;
};

// "   float sin(float)", listed behind a call that matches none.
bool isCandidate(const DriverMessage& message, std::string_view line) {
    const std::size_t text = line.find(message.text);
    return text >= 3 && text != std::string_view::npos && line.substr(text - 3, 3) == "   " &&
           message.text.ends_with(')');
}

// What a driver writes besides its findings.
bool isSummary(std::string_view line) {
    return line.find("compilation errors") != std::string_view::npos ||
           line.find("No code generated") != std::string_view::npos ||
           line.find("unexpected ERROR_TOK") != std::string_view::npos; // behind another error
}

} // namespace

std::vector<DriverMessage> parseDriverLog(std::string_view log) {
    std::vector<DriverMessage> messages;
    ConsequenceFilter filter;
    bool isLastDropped = false;
    const SourceText lines(log);
    for (std::size_t number = 1; number <= lines.lines(); ++number) {
        std::string_view line = lines.line(number);
        line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
        if (line.empty() || isSummary(line))
            continue;
        DriverMessage message = parseLine(line);
        if (isCandidate(message, line)) {
            if (!messages.empty() && !isLastDropped)
                messages.back().candidates.push_back(message.text);
            continue;
        }
        constexpr std::string_view listFollows = "; candidates are:";
        if (message.text.ends_with(listFollows))
            message.text.resize(message.text.size() - listFollows.size());
        isLastDropped = filter.drops(message);
        if (!isLastDropped)
            messages.push_back(std::move(message));
    }
    return messages;
}

std::string_view namedIn(std::string_view message) {
    const std::size_t quote = message.find_first_of("`'\"");
    if (quote == std::string_view::npos)
        return {};
    const std::string_view rest = message.substr(quote + 1);
    std::size_t length = 0;
    while (length < rest.size() && isNameByte(rest[length]))
        ++length;
    return rest.substr(0, length);
}

} // namespace pbhost
