#include "pixelbender/shader_reader.h"

#include <array>
#include <functional>

namespace {

// Ends the text, anywhere.
constexpr char endOfText = '\x03';

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isNamePart(char c) {
    return isNameStart(c) || isDigit(c);
}

bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isLineEnd(char c) {
    return c == '\n' || c == '\r';
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || isLineEnd(c);
}

bool isPunctuation(char c) {
    return (c >= 33 && c <= 47) || (c >= 58 && c <= 64) || (c >= 91 && c <= 96) ||
           (c >= 123 && c <= 126);
}

bool isOperatorPair(char first, char second) {
    constexpr std::array<std::string_view, 12> pairs = {
        "++", "+=", "--", "-=", "<<", "<=", ">>", ">=", "&&", "||", "*=", "/="};
    for (const std::string_view pair : pairs)
        if (pair[0] == first && pair[1] == second)
            return true;
    return false;
}

} // namespace

bool ShaderReader::Parser::parse(ShaderReader& reader, std::int32_t, TokenKind, State,
                                 std::string_view token) {
    take(reader, token);
    return false;
}

ShaderReader::ShaderReader(std::string_view source) : text(source) {}

void ShaderReader::record(std::size_t at, std::string_view piece) const {
    const char* const begin = text.data();
    constexpr std::less<const char*> isBefore; // defined for pointers into different objects
    if (!isBefore(piece.data(), begin) && isBefore(piece.data(), begin + text.size()))
        sourceMap->add(at, static_cast<std::size_t>(piece.data() - begin), piece.size());
}

bool ShaderReader::isAtEnd() const {
    return position >= text.size() || text[position] == endOfText;
}

void ShaderReader::parse(Parser& parser) {
    while (!isAtEnd()) {
        Token token = tokenAtPosition();
        auto length = static_cast<std::int32_t>(token.text.size());
        const State opened = contextAt(position);
        if (opened == BlockComment || opened == LineComment) {
            length = contextLength(opened);
            token.text = opened == BlockComment ? " " : "\n";
        }
        advance(length);
        if (parser.parse(*this, length, token.kind, state, token.text))
            return;
    }
}

ShaderReader::Token ShaderReader::tokenAtPosition() const {
    const char first = charAt(position);
    const char second = charAt(position + 1);
    TokenKind kind = NoToken;
    std::size_t length = 1;
    if (isDigit(first) || (first == '.' && isDigit(second))) {
        kind = Number;
        length = numberLength(position);
    } else if (isNameStart(first)) {
        kind = Identifier;
        while (isNamePart(charAt(position + length)))
            ++length;
    } else if (isBlank(first)) {
        kind = Whitespace;
    } else if (isPunctuation(first)) {
        kind = Operator;
        length = isOperatorPair(first, second) ? 2 : 1;
    }
    return {kind, std::string_view(text).substr(position, length)};
}

std::size_t ShaderReader::numberLength(std::size_t start) const {
    std::size_t at = start;
    if (charAt(at) == '0' && charAt(at + 1) == 'x') {
        at += 2;
        while (isHexDigit(charAt(at)))
            ++at;
        return at - start;
    }
    bool isPastPoint = false;
    for (; isDigit(charAt(at)) || (charAt(at) == '.' && !isPastPoint); ++at)
        isPastPoint = isPastPoint || charAt(at) == '.';
    constexpr std::string_view suffixes = "fFlLuU";
    if (suffixes.find(charAt(at)) != std::string_view::npos)
        ++at;
    return at - start;
}

ShaderReader::State ShaderReader::quoteKind(std::size_t at) const {
    const char quote = charAt(at);
    if (quote != '\'' && quote != '"')
        return Code;
    std::size_t backslashes = 0;
    while (backslashes < at && text[at - backslashes - 1] == '\\')
        ++backslashes;
    if (backslashes % 2 != 0)
        return Code;
    return quote == '\'' ? SingleQuoted : DoubleQuoted;
}

// The construct that begins at a position; Code for none.
ShaderReader::State ShaderReader::contextAt(std::size_t at) const {
    const char current = charAt(at);
    if (current == '#')
        return Preprocessor;
    if (current == '/' && charAt(at + 1) == '/')
        return LineComment;
    if (current == '/' && charAt(at + 1) == '*')
        return BlockComment;
    return current == endOfText ? End : quoteKind(at);
}

// The construct that ends at a position; Code for none.
ShaderReader::State ShaderReader::contextEndAt(std::size_t at) const {
    const char current = charAt(at);
    if (isLineEnd(current))
        return LineComment;
    if (current == '/' && at > 0 && text[at - 1] == '*')
        return BlockComment;
    return current == endOfText ? End : quoteKind(at);
}

// The number of characters from the position through the end of the construct; -1 if it has no end.
std::int32_t ShaderReader::contextLength(State context) const {
    for (std::size_t at = position; at < text.size(); ++at) {
        const char current = text[at];
        if (current == '\0' || current == endOfText)
            return -1;
        const bool isEnd = context == Preprocessor
                               ? isLineEnd(current) && (at == 0 || text[at - 1] != '\\')
                               : contextEndAt(at) == context;
        if (isEnd)
            return static_cast<std::int32_t>(at - position + 1);
    }
    return -1;
}

std::string_view ShaderReader::restOf(State context) const {
    const std::string_view rest = std::string_view(text).substr(position);
    const std::int32_t length = contextLength(context);
    return length < 0 ? rest.substr(0, rest.find(endOfText))
                      : rest.substr(0, static_cast<std::size_t>(length));
}

bool ShaderReader::advance(std::int32_t count) {
    for (std::int32_t step = 0; count < 0 || step < count; ++step) {
        const char current = charAt(position);
        follow(current, position == 0 ? '\0' : text[position - 1], charAt(position + 1));
        if (isAtEnd()) {
            state = End;
            return false;
        }
        ++position;
    }
    return true;
}

// Updates the state and the counters for one character.
void ShaderReader::follow(char current, char previous, char next) {
    if (isLineEnd(current)) {
        ++line;
        if (state == LineComment)
            state = Code;
    }
    switch (state) {
    case Code:
        followCode(current, previous, next);
        break;
    case Preprocessor:
        followDirective(current, previous, next);
        break;
    case BlockComment:
        if (current == '*' && next == '/')
            state = Code;
        break;
    case SingleQuoted:
    case DoubleQuoted:
        followQuoted(state);
        break;
    case LineComment:
    case End:
        break;
    }
}

void ShaderReader::followCode(char current, char previous, char next) {
    switch (current) {
    case '{':
        ++braceDepth;
        break;
    case '}':
        --braceDepth;
        break;
    case '(':
        ++parenDepth;
        break;
    case ')':
        --parenDepth;
        break;
    case '/':
        if (next == '/')
            state = LineComment;
        break;
    case '*':
        if (previous == '/')
            state = BlockComment;
        break;
    case '#':
        state = Preprocessor;
        break;
    case '\'':
    case '"':
        state = quoteKind(position);
        break;
    default:
        break;
    }
}

void ShaderReader::followQuoted(State quote) {
    if (quoteKind(position) == quote)
        state = Code;
}

void ShaderReader::followDirective(char current, char previous, char next) {
    if (isLineEnd(current) && previous != '\\')
        state = Code;
    else if (current == '/' && next == '/')
        state = LineComment;
    else if (current == '*' && previous == '/')
        state = BlockComment;
}

std::string_view ShaderReader::readIdentifier(std::string_view stop) {
    return readToken(Identifier, stop);
}

std::string_view ShaderReader::readNumber(std::string_view stop) {
    return readToken(Number, stop);
}

std::string_view ShaderReader::readToken(TokenKind kind, std::string_view stop) {
    while (!isAtEnd()) {
        const Token token = tokenAtPosition();
        advance(static_cast<std::int32_t>(token.text.size()));
        if (token.text == stop)
            break;
        if (token.kind == kind)
            return token.text;
    }
    return {};
}

std::string_view ShaderReader::readString(std::string_view stop) {
    while (!isAtEnd()) {
        const State quote = contextAt(position);
        if (quote == SingleQuoted || quote == DoubleQuoted) {
            advance(1);
            const std::size_t start = position;
            while (!isAtEnd() && contextEndAt(position) != quote)
                advance(1);
            return std::string_view(text).substr(start, position - start);
        }
        const Token token = tokenAtPosition();
        advance(static_cast<std::int32_t>(token.text.size()));
        if (token.text == stop)
            break;
    }
    return {};
}
