// Columns of lines as Mesa counts them, which are those of its preprocessor's output: macros are
// expanded, and a run of blanks and comments is one blank.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "pbhost/diagnostics/source_text.h"

namespace pbhost {

// A line with those that follow it, each joined by a backslash at its end.
std::string_view joinedLine(const SourceText& source, std::size_t number);

class PreprocessedColumns {
public:
    // Reads the macros of a shader, which must outlive the object.
    explicit PreprocessedColumns(std::string_view shader);

    // The offset in a joined line of what stands in the given column, from 1, of the preprocessed
    // line. A macro's expansion is at the macro's name, its arguments at their own places. The
    // length of the line for a column behind the end.
    std::size_t offsetOfColumn(std::size_t lineNumber, std::string_view line,
                               std::size_t column) const;

private:
    struct Token {
        std::string_view text; // a name, a number, one other character, or one blank
        std::size_t offset;    // in the line; tokens of a macro have that of its name
    };
    using Tokens = std::vector<Token>;

    struct Macro {
        bool hasParameters = false;
        std::vector<std::string_view> parameters;
        Tokens body;
    };

    struct Expansion {
        std::size_t lineNumber;
        Tokens tokens;
        std::size_t written; // tokens that macros have written, with those they replaced
    };

    static Tokens tokensOf(std::string_view line);
    void define(std::size_t lineNumber, std::string_view definition);
    const Macro* macroAt(std::string_view name, std::size_t lineNumber) const;
    void expand(const Tokens& tokens, Expansion& expansion, int depth) const;
    static std::size_t readArguments(const Tokens& tokens, std::size_t open,
                                     std::vector<Tokens>& arguments);
    static Tokens substitute(const Macro& macro, const std::vector<Tokens>& arguments,
                             std::size_t offset);

    // By name, then by the line of the definition.
    std::map<std::string_view, std::map<std::size_t, Macro>> macros_;
};

} // namespace pbhost
