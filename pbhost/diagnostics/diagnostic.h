// A finding about a kernel or graph file, as data; how it is shown is decided elsewhere.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "pbhost/diagnostics/source_text.h"

namespace pbhost {

enum class Severity { Error, Warning };

struct Diagnostic {
    Severity severity = Severity::Error;
    std::string rule;               // a stable id, one of diagnosticRules
    std::string message;            // one line
    std::string file;               // as the user named it
    Place place;                    // line 0: the file as a whole; column 0: the whole line
    std::size_t length = 0;         // of the marked text in bytes; 0: one place
    std::vector<std::string> nodes; // ids of the graph's nodes whose programs it is about
    std::vector<std::string> notes; // further lines
    std::string sourceLine;         // the text of the line; empty for line 0
};

using Diagnostics = std::vector<Diagnostic>;

struct DiagnosticRule {
    const char* id;
    const char* description;
};

// All rules, sorted by their id.
const std::vector<DiagnosticRule>& diagnosticRules();

const char* severityName(Severity severity); // "error" or "warning"

bool hasErrors(const Diagnostics& found);

// Sorts by line and column, and merges repetitions, which may be about different nodes.
void sortDiagnostics(Diagnostics& found);

// A name of the file in a message.
inline std::string inQuotes(std::string_view name) {
    return "\"" + std::string(name) + "\"";
}

// Writes findings about one text.
class DiagnosticList {
public:
    // `source` must outlive the list.
    DiagnosticList(std::string file, const SourceText& source)
        : file_(std::move(file)), source_(source) {}

    // Adds a finding about the text at an offset; the reference is valid until the next call.
    Diagnostic& add(Severity severity, const char* rule, std::size_t offset, std::size_t length,
                    std::string message);
    // Adds a finding about the file as a whole.
    Diagnostic& add(Severity severity, const char* rule, std::string message);

    const SourceText& source() const { return source_; }

    Diagnostics found;

private:
    std::string file_;
    const SourceText& source_;
};

// The finding in the form of GCC: a line "FILE:LINE:COLUMN: error: MESSAGE [RULE]", the line of the
// source, a line with a mark, and a line for each note.
std::string asGccText(const Diagnostic& diagnostic);
std::string asGccText(const Diagnostics& found);

} // namespace pbhost
