// A scanner for C-like languages: it finds tokens, distinguishes code from comments, strings and
// preprocessor lines, and counts braces and parentheses.
//
// It has no grammar: it passes each token to a Parser, which may call back for the next identifier,
// number or string, or run a nested Parser over the tokens that follow. Nothing is reported;
// invalid text only gives fewer tokens. The time is linear in the length of every text.
//
// A reader is used once, from front to back. Tokens are views of the reader's own copy of the text
// and valid as long as the reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "pixelbender/source_map.h"
#include "support/text.h"

class ShaderReader {
public:
    // The construct that contains the reader's position.
    enum State : std::int32_t {
        Code,
        Preprocessor, // after a '#', up to the end of that line
        BlockComment,
        LineComment,
        SingleQuoted,
        DoubleQuoted,
        End, // the end of the text
    };

    enum TokenKind : std::int32_t {
        NoToken,    // a byte that cannot start a token
        Whitespace, // one blank, tab, LF or CR
        Number,     // without an exponent
        Identifier,
        Operator, // a two-character operator or one punctuation character
    };

    class Parser {
    public:
        virtual ~Parser() = default;

        // Receives one token; the reader's position is already after it. `length` is the number of
        // characters skipped, -1 for "to the end of the text", `state` the reader's state after
        // them. Returns true if this parser has finished. The base class collects every token.
        virtual bool parse(ShaderReader& reader, std::int32_t length, TokenKind kind, State state,
                           std::string_view token);

        NarrowString text; // what this parser has collected

    protected:
        // Appends a piece, and records its source in the reader's map if it is a view of the
        // reader's text.
        void take(const ShaderReader& reader, std::string_view piece) {
            if (reader.sourceMap != nullptr)
                reader.record(start_ + text.size(), piece);
            text.append(piece);
        }
        // Appends what another parser collects from here on.
        void takeNested(ShaderReader& reader, Parser& parser) {
            parser.start_ = start_ + text.size();
            reader.parse(parser);
            text.append(parser.text);
        }

    private:
        std::size_t start_ = 0; // of this parser's text in the outermost one's
    };

    explicit ShaderReader(std::string_view source);
    virtual ~ShaderReader() = default;
    ShaderReader(const ShaderReader&) = delete;
    ShaderReader& operator=(const ShaderReader&) = delete;

    // Passes tokens to the parser until it has finished or the text ends.
    virtual void parse(Parser& parser);

    // The next identifier or number, or an empty text if the token `stop` or the text's end comes
    // first; `stop` is skipped. An empty `stop` matches no token.
    virtual std::string_view readIdentifier(std::string_view stop);
    virtual std::string_view readNumber(std::string_view stop);

    // The unprocessed contents of the next quoted string; the position is then on the closing
    // quote. Without a closing quote, the rest of the text.
    virtual std::string_view readString(std::string_view stop);

    // Skips that many characters, -1 for all to the end of the text; false if the text ended
    // before.
    bool advance(std::int32_t count);

    const char* currentText() const { return text.data() + position; }

    // The characters from the position through the end of the current construct; without an end,
    // the rest of the text.
    std::string_view restOf(State context) const;

    std::int32_t line = 0;       // LF and CR characters skipped
    std::int32_t braceDepth = 0; // '{' less '}' in code; may fall below zero
    std::int32_t parenDepth = 0; // '(' less ')' in code; may fall below zero
    std::uint32_t position = 0;
    NarrowString text;
    State state = Code;
    // Filled, not owned; null: not wanted. Its offsets are those of `text` and of what the
    // outermost parser has collected.
    SourceMap* sourceMap = nullptr;

private:
    struct Token {
        TokenKind kind;
        std::string_view text;
    };

    bool isAtEnd() const;
    char charAt(std::size_t at) const { return at < text.size() ? text[at] : '\0'; }
    Token tokenAtPosition() const;
    std::size_t numberLength(std::size_t at) const;
    State contextAt(std::size_t at) const;
    State contextEndAt(std::size_t at) const;
    State quoteKind(std::size_t at) const;
    std::int32_t contextLength(State context) const;
    std::string_view readToken(TokenKind kind, std::string_view stop);
    void record(std::size_t at, std::string_view piece) const;
    void follow(char current, char previous, char next);
    void followCode(char current, char previous, char next);
    void followQuoted(State quote);
    void followDirective(char current, char previous, char next);
};
