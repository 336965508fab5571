#include "pbhost/diagnostics/preprocessed_columns.h"

#include <algorithm>

namespace pbhost {

namespace {

constexpr int deepestExpansion = 16;
// Tokens that the macros of a line may write, because macros may multiply each other.
constexpr std::size_t mostTokens = 100'000;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

// The length of a backslash and the line's end behind it, which join two lines; 0: none.
std::size_t joinLength(std::string_view text) {
    return text.starts_with("\\\r\n")                             ? 3
           : text.starts_with("\\\n") || text.starts_with("\\\r") ? 2
                                                                  : 0;
}

// The length of the blanks, comments and joints in front of a text.
std::size_t blankLength(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        if (const std::size_t joint = joinLength(text.substr(at)); joint > 0) {
            at += joint;
        } else if (isBlank(text[at])) {
            ++at;
        } else if (text.substr(at, 2) == "/*") {
            const std::size_t end = text.find("*/", at + 2);
            at = end == std::string_view::npos ? text.size() : end + 2;
        } else if (text.substr(at, 2) == "//") {
            at = text.size();
        } else {
            break;
        }
    }
    return at;
}

bool isName(std::string_view token) {
    return isNameByte(token[0]) && !(token[0] >= '0' && token[0] <= '9');
}

constexpr std::string_view oneBlank = " ";

} // namespace

std::string_view joinedLine(const SourceText& source, std::size_t number) {
    const std::size_t start = source.offsetOfLine(number);
    std::size_t end = start + source.line(number).size();
    while (end > start && source.text[end - 1] == '\\' && number < source.lines()) {
        ++number;
        end = source.offsetOfLine(number) + source.line(number).size();
    }
    return source.text.substr(start, end - start);
}

PreprocessedColumns::PreprocessedColumns(std::string_view shader) {
    const SourceText source(shader);
    for (std::size_t number = 1; number <= source.lines(); ++number) {
        std::string_view line = joinedLine(source, number);
        line.remove_prefix(std::min(blankLength(line), line.size()));
        if (line.starts_with('#'))
            define(number, line.substr(1));
    }
}

PreprocessedColumns::Tokens PreprocessedColumns::tokensOf(std::string_view line) {
    Tokens tokens;
    for (std::size_t at = 0; at < line.size();) {
        std::size_t length = blankLength(line.substr(at));
        if (length > 0) {
            const std::string_view blanks = line.substr(at, length);
            if (length > joinLength(blanks)) // a joint alone is nothing
                tokens.push_back({oneBlank, at});
        } else {
            while (at + length < line.size() && isNameByte(line[at + length]))
                ++length;
            length = std::max<std::size_t>(length, 1);
            tokens.push_back({line.substr(at, length), at});
        }
        at += length;
    }
    return tokens;
}

// Takes "define NAME BODY" or "define NAME(PARAMETERS) BODY"; ignores other directives.
void PreprocessedColumns::define(std::size_t lineNumber, std::string_view definition) {
    const Tokens tokens = tokensOf(definition);
    std::size_t at = 0;
    const auto isAt = [&](std::string_view text) {
        return at < tokens.size() && tokens[at].text == text;
    };
    at += isAt(oneBlank) ? 1 : 0;
    if (!isAt("define"))
        return;
    ++at;
    at += isAt(oneBlank) ? 1 : 0;
    if (at == tokens.size())
        return;
    Macro& macro = macros_[tokens[at].text][lineNumber];
    ++at;
    macro.hasParameters = isAt("(");
    if (macro.hasParameters) {
        for (++at; at < tokens.size() && !isAt(")"); ++at)
            if (isName(tokens[at].text))
                macro.parameters.push_back(tokens[at].text);
        ++at;
    }
    at += isAt(oneBlank) ? 1 : 0;
    if (at < tokens.size())
        macro.body.assign(tokens.begin() + static_cast<std::ptrdiff_t>(at), tokens.end());
    if (!macro.body.empty() && macro.body.back().text == oneBlank)
        macro.body.pop_back();
}

const PreprocessedColumns::Macro* PreprocessedColumns::macroAt(std::string_view name,
                                                               std::size_t lineNumber) const {
    const auto found = macros_.find(name);
    if (found == macros_.end())
        return nullptr;
    const auto behind = found->second.lower_bound(lineNumber);
    return behind == found->second.begin() ? nullptr : &std::prev(behind)->second;
}

// Reads the arguments of a macro from its '(' on. Returns the index of the ')', or that of the end.
std::size_t PreprocessedColumns::readArguments(const Tokens& tokens, std::size_t open,
                                               std::vector<Tokens>& arguments) {
    int depth = 0;
    arguments.emplace_back();
    for (std::size_t at = open; at < tokens.size(); ++at) {
        const std::string_view text = tokens[at].text;
        depth += text == "(" ? 1 : text == ")" ? -1 : 0;
        if (depth == 0)
            return at;
        if (text == "," && depth == 1)
            arguments.emplace_back();
        else if (at > open && !(text == oneBlank && arguments.back().empty()))
            arguments.back().push_back(tokens[at]);
    }
    return tokens.size();
}

PreprocessedColumns::Tokens PreprocessedColumns::substitute(const Macro& macro,
                                                            const std::vector<Tokens>& arguments,
                                                            std::size_t offset) {
    Tokens result;
    if (macro.body.empty()) // Mesa writes a blank for an empty macro
        result.push_back({oneBlank, offset});
    for (const Token& token : macro.body) {
        const auto parameter =
            std::find(macro.parameters.begin(), macro.parameters.end(), token.text);
        const auto index = static_cast<std::size_t>(parameter - macro.parameters.begin());
        if (index >= arguments.size() || parameter == macro.parameters.end()) {
            result.push_back({token.text, offset});
            continue;
        }
        Tokens argument = arguments[index];
        if (!argument.empty() && argument.back().text == oneBlank)
            argument.pop_back();
        result.insert(result.end(), argument.begin(), argument.end());
    }
    return result;
}

void PreprocessedColumns::expand(const Tokens& tokens, Expansion& expansion, int depth) const {
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const bool mayExpand = depth < deepestExpansion && expansion.written < mostTokens;
        const Macro* macro = mayExpand ? macroAt(tokens[at].text, expansion.lineNumber) : nullptr;
        std::vector<Tokens> arguments;
        std::size_t last = at;
        if (macro != nullptr && macro->hasParameters) {
            std::size_t open = at + 1;
            open += open < tokens.size() && tokens[open].text == oneBlank ? 1 : 0;
            if (open < tokens.size() && tokens[open].text == "(")
                last = readArguments(tokens, open, arguments);
            else
                macro = nullptr;
        }
        if (macro == nullptr || last == tokens.size()) {
            expansion.tokens.push_back(tokens[at]);
            continue;
        }
        const Tokens replaced = substitute(*macro, arguments, tokens[at].offset);
        expansion.written += replaced.size() + 1;
        expand(replaced, expansion, depth + 1);
        at = last;
    }
}

std::size_t PreprocessedColumns::offsetOfColumn(std::size_t lineNumber, std::string_view line,
                                                std::size_t column) const {
    Expansion expansion{lineNumber, {}, 0};
    expand(tokensOf(line), expansion, 0);
    std::size_t next = 1; // column of the token
    for (const Token& token : expansion.tokens) {
        if (column < next + token.text.size()) {
            const bool isOwn = line.substr(token.offset, token.text.size()) == token.text;
            return token.offset + (isOwn && column > next ? column - next : 0);
        }
        next += token.text.size();
    }
    return line.size();
}

} // namespace pbhost
