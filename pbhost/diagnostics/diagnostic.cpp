#include "pbhost/diagnostics/diagnostic.h"

#include <algorithm>
#include <tuple>

#include "pbhost/files/printable.h"

namespace pbhost {

namespace {

constexpr std::size_t longestQuote = 160; // bytes of a source line that are shown

// The part of the line that is shown: all of a line of ordinary length, otherwise what is around
// the column.
std::string_view shownPart(std::string_view line, std::size_t column, std::size_t& start) {
    start = 0;
    if (line.size() > longestQuote && column > longestQuote / 2)
        start = std::min(column - longestQuote / 2, line.size() - longestQuote);
    while (start > 0 && (static_cast<unsigned char>(line[start]) & 0xC0U) == 0x80U)
        --start; // not inside a character
    return line.substr(start, longestQuote);
}

// Blanks as wide as the text; a tab stays one, so that the mark stands below its place.
std::string asBlanks(std::string_view text) {
    std::string blanks;
    for (const char c : text)
        if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U)
            blanks += c == '\t' ? '\t' : ' ';
    return blanks;
}

std::string quoted(const Diagnostic& diagnostic) {
    const Place place = diagnostic.place;
    if (diagnostic.sourceLine.empty() || place.line == 0)
        return "";
    std::string number = std::to_string(place.line);
    number.insert(0, number.size() < 5 ? 5 - number.size() : 0, ' ');
    std::size_t start = 0;
    const std::string_view shown = shownPart(diagnostic.sourceLine, place.column, start);
    std::string text = number + " | " + std::string(shown) + "\n";
    if (place.column == 0 || place.column - 1 < start || place.column - 1 > start + shown.size())
        return text;
    const std::string_view before = shown.substr(0, place.column - 1 - start);
    const std::string_view marked = shown.substr(before.size(), diagnostic.length);
    const std::size_t width = std::max<std::size_t>(asBlanks(marked).size(), 1);
    return text + std::string(number.size(), ' ') + " | " + asBlanks(before) + "^" +
           std::string(width - 1, '~') + "\n";
}

std::string nodesText(const std::vector<std::string>& nodes) {
    std::string text;
    for (const std::string& node : nodes)
        text +=
            (text.empty() ? nodes.size() == 1 ? " (node \"" : " (nodes \"" : ", \"") + node + "\"";
    return text.empty() ? text : text + ")";
}

auto sortKey(const Diagnostic& each) {
    return std::tie(each.place.line, each.place.column, each.message);
}

bool areAlike(const Diagnostic& one, const Diagnostic& other) {
    return sortKey(one) == sortKey(other) && one.severity == other.severity;
}

} // namespace

const std::vector<DiagnosticRule>& diagnosticRules() {
    static const std::vector<DiagnosticRule> rules = {
        {"compile-error", "The OpenGL driver does not compile or link a program."},
        {"compile-warning", "The OpenGL driver warns about a program."},
        {"control-type", "A hint or parameter type does not fit the parameter's type."},
        {"default-range", "A default is outside of the parameter's range."},
        {"driver-crash", "The OpenGL driver crashed."},
        {"driver-timeout", "The OpenGL driver takes too long to compile a program."},
        {"graph-connection", "A connection of a graph does not lead from or to what exists."},
        {"graph-cycle", "Nodes of a graph depend on each other."},
        {"graph-input", "An input of a node is not connected and reads as transparent."},
        {"graph-kernel", "A node's kernel does not exist."},
        {"graph-node", "A node's id is not unique, or nothing reads its output."},
        {"graph-output", "No connection leads to the output image."},
        {"integer-division", "A division of two integers cuts the fraction."},
        {"kernel-keyword", "The keyword \"kernel\" or the kernel's name is missing."},
        {"language-version", "The language version is missing."},
        {"long-name", "A name is longer than the 31 bytes that are used."},
        {"loop-bound", "A loop may be ended by a software driver."},
        {"metadata-syntax", "A separator of metadata is wrong or missing."},
        {"missing-attribute", "An attribute of a graph's element is missing."},
        {"no-function", "A function that every kernel needs is missing."},
        {"no-graph", "The file has no graph."},
        {"no-kernel", "The file has no kernel."},
        {"no-metadata", "A kernel has no metadata."},
        {"output", "The output is missing or has not four channels."},
        {"parameter-type", "A parameter has a type without a control."},
        {"range", "A parameter has no range or an empty one."},
        {"reserved-word", "A name is a reserved word of GLSL."},
        {"second-kernel", "A file has more than one kernel."},
        {"second-output", "A kernel has more than one output."},
        {"text-behind-kernel", "There is text behind the kernel."},
        {"too-many-inputs", "A kernel has more inputs than can be fed."},
        {"too-many-parameters", "There are more parameters than controls."},
        {"unclosed-brace", "A brace is not closed."},
        {"unclosed-comment", "A comment is not closed."},
        {"unclosed-string", "A text has no closing quote."},
        {"unknown-attribute", "An attribute of a graph's element is unknown."},
        {"unknown-element", "An element of a graph is unknown."},
        {"unknown-key", "A key of metadata is unknown."},
        {"unknown-word", "A hint or parameter type is unknown."},
        {"unreadable", "The file cannot be read."},
        {"value-count", "A value has too few or too many numbers."},
        {"value-kind", "A value is of another kind than its parameter."},
        {"xml", "The XML of a graph is malformed."},
    };
    return rules;
}

const char* severityName(Severity severity) {
    return severity == Severity::Error ? "error" : "warning";
}

bool hasErrors(const Diagnostics& found) {
    return std::any_of(found.begin(), found.end(),
                       [](const Diagnostic& each) { return each.severity == Severity::Error; });
}

void sortDiagnostics(Diagnostics& found) {
    std::stable_sort(found.begin(), found.end(),
                     [](const Diagnostic& one, const Diagnostic& other) {
                         return sortKey(one) < sortKey(other);
                     });
    Diagnostics merged;
    for (Diagnostic& each : found) {
        if (merged.empty() || !areAlike(merged.back(), each)) {
            merged.push_back(std::move(each));
            continue;
        }
        std::vector<std::string>& nodes = merged.back().nodes;
        for (std::string& node : each.nodes)
            if (std::find(nodes.begin(), nodes.end(), node) == nodes.end())
                nodes.push_back(std::move(node));
    }
    found = std::move(merged);
}

Diagnostic& DiagnosticList::add(Severity severity, const char* rule, std::size_t offset,
                                std::size_t length, std::string message) {
    Diagnostic& added = add(severity, rule, std::move(message));
    added.place = source_.placeOf(offset);
    added.sourceLine = source_.line(added.place.line);
    const std::size_t rest =
        added.sourceLine.size() - std::min(added.place.column - 1, added.sourceLine.size());
    added.length = std::min(length, rest);
    return added;
}

Diagnostic& DiagnosticList::add(Severity severity, const char* rule, std::string message) {
    Diagnostic& added = found.emplace_back();
    added.severity = severity;
    added.rule = rule;
    added.message = std::move(message);
    added.file = file_;
    return added;
}

std::string asGccText(const Diagnostic& diagnostic) {
    std::string where = diagnostic.file + ":";
    if (diagnostic.place.line != 0)
        where += std::to_string(diagnostic.place.line) + ":";
    if (diagnostic.place.column != 0)
        where += std::to_string(diagnostic.place.column) + ":";
    std::string text = where + " " + severityName(diagnostic.severity) + ": " + diagnostic.message +
                       nodesText(diagnostic.nodes) + " [" + diagnostic.rule + "]\n" +
                       quoted(diagnostic);
    for (const std::string& note : diagnostic.notes)
        text += where + " note: " + note + "\n";
    return printable(text);
}

std::string asGccText(const Diagnostics& found) {
    std::string text;
    for (const Diagnostic& each : found)
        text += asGccText(each);
    return text;
}

} // namespace pbhost
