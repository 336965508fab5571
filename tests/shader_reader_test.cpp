// The scanner: tokens, comments, strings, directives, and the counters that go with them.
#include <string>
#include <vector>

#include "pixelbender/shader_reader.h"
#include "tests/support/running_command.h"

namespace {

using Texts = std::vector<std::string>;

// Writes each token down with a letter for its kind in front.
class TokenList : public ShaderReader::Parser {
public:
    bool parse(ShaderReader&, std::int32_t length, ShaderReader::TokenKind kind,
               ShaderReader::State state, std::string_view token) override {
        constexpr std::string_view letters = "?WNIO";
        tokens.push_back(letters[kind] + std::string(token));
        lastLength = length;
        lastState = state;
        return false;
    }

    Texts tokens;
    std::int32_t lastLength = 0;
    ShaderReader::State lastState = ShaderReader::Code;
};

class ShaderReaderTest : public RunningCommand {};

TEST_F(ShaderReaderTest, findsTokens) {
    struct Case {
        std::string source;
        Texts tokens;
    };
    const Case cases[] = {
        {"a+=b", {"Ia", "O+=", "Ib"}},
        {"a==b!=c", {"Ia", "O=", "O=", "Ib", "O!", "O=", "Ic"}},
        {"->%=::", {"O-", "O>", "O%", "O=", "O:", "O:"}},
        {"++--<<<=>>>=&&||*=/=",
         {"O++", "O--", "O<<", "O<=", "O>>", "O>=", "O&&", "O||", "O*=", "O/="}},
        {"+++&|", {"O++", "O+", "O&", "O|"}},
        {"_a1 a$", {"I_a1", "W ", "Ia", "O$"}},
        {"\t\r\n ", {"W\t", "W\r", "W\n", "W "}},
        {".5f", {"N.5f"}},
        {"5.", {"N5."}},
        {"1.2.3", {"N1.2", "N.3"}},
        {"1.f.x", {"N1.f", "O.", "Ix"}},
        {"1.5e3", {"N1.5", "Ie3"}},
        {"7UL", {"N7U", "IL"}},
        {"0xFFu", {"N0xFF", "Iu"}},
        {"0X10", {"N0", "IX10"}},
        {"0x", {"N0x"}},
        {"a/*b\n*/c", {"Ia", "O ", "Ic"}},
        {"a//b\r\nc", {"Ia", "O\n", "W\n", "Ic"}},
        {"/*/a", {"O ", "Ia"}},
        {"/**/a", {"O ", "Ia"}},
        {"'a//b'\nc", {"O'", "Ia", "O\n", "Ic"}},
        {"\xEF\xBB\xBF"
         "a\x7F\x01",
         {"?\xEF", "?\xBB", "?\xBF", "Ia", "?\x7F", "?\x01"}},
        {"a\x03"
         "b",
         {"Ia"}},
        {std::string("a\0b", 3), {"Ia", std::string("?\0", 2), "Ib"}},
        {"", {}},
    };
    for (const Case& each : cases) {
        ShaderReader reader(each.source);
        TokenList list;
        reader.parse(list);
        EXPECT_EQ(list.tokens, each.tokens) << each.source;
    }
}

TEST_F(ShaderReaderTest, takesAnOpenCommentAsOneToken) {
    const Texts sources = {"/* a\n", "// a", "/* '", "/*\x03 */ a", std::string("/*\0*/ a", 7)};
    for (const std::string& source : sources) {
        ShaderReader reader(source);
        TokenList list;
        reader.parse(list);
        EXPECT_EQ(list.tokens, Texts{source[1] == '*' ? "O " : "O\n"}) << source;
        EXPECT_EQ(list.lastLength, -1) << source;
        EXPECT_EQ(list.lastState, ShaderReader::End) << source;
    }
}

TEST_F(ShaderReaderTest, countsInCodeAlone) {
    struct Case {
        const char* source;
        int line, braceDepth, parenDepth;
        ShaderReader::State state;
    };
    const Case cases[] = {
        {"{(\r\n{", 2, 2, 1, ShaderReader::Code},
        {"}})", 0, -2, -1, ShaderReader::Code},
        {"/* { */ // (\n{", 1, 1, 0, ShaderReader::Code},
        {"a / { * }", 0, 0, 0, ShaderReader::Code},
        {"#define A {(\n}", 1, -1, 0, ShaderReader::Code},
        {"#a \\\n{\n(", 2, 0, 1, ShaderReader::Code},
        {"#a {", 0, 0, 0, ShaderReader::Preprocessor},
        {"#a // {\n(", 1, 0, 1, ShaderReader::Code},
        {"#a /* {\n } */ (", 1, 0, 1, ShaderReader::Code},
        {"'{' \"(\"", 0, 0, 0, ShaderReader::Code},
        {"\"'{'\"{", 0, 1, 0, ShaderReader::Code},
        {"\"\\\"{", 0, 0, 0, ShaderReader::DoubleQuoted},
        {"\"\\\\\"{", 0, 1, 0, ShaderReader::Code},
        {"'\"{", 0, 0, 0, ShaderReader::SingleQuoted},
        {"\\'{", 0, 1, 0, ShaderReader::Code},
    };
    for (const Case& each : cases) {
        ShaderReader reader(each.source);
        ShaderReader::Parser parser;
        reader.parse(parser);
        EXPECT_EQ(reader.line, each.line) << each.source;
        EXPECT_EQ(reader.braceDepth, each.braceDepth) << each.source;
        EXPECT_EQ(reader.parenDepth, each.parenDepth) << each.source;
        EXPECT_EQ(reader.state, each.state) << each.source;
    }
}

TEST_F(ShaderReaderTest, readsTheNextOfAKind) {
    using Read = std::string_view (ShaderReader::*)(std::string_view);
    const Read identifier = &ShaderReader::readIdentifier;
    const Read number = &ShaderReader::readNumber;
    const Read string = &ShaderReader::readString;
    struct Case {
        const char* source;
        Read read;
        const char* stop;
        const char* result;
        const char* rest; // what the reader then stands before
    };
    const Case cases[] = {
        {" 12+name x", identifier, "", "name", " x"},
        {";float", identifier, ";", "", "float"},
        {"/* word */ float", identifier, ";", "word", " */ float"},
        {"12;", identifier, "", "", ""},
        {": 1.5f;>", number, ">", "1.5f", ";>"},
        {"abc > 5", number, ">", "", " 5"},
        {": \"a\\\"b\";", string, ";", "a\\\"b", "\";"},
        {"'a\"b' c", string, ";", "a\"b", "' c"},
        {"'a;//b\n' c", string, ";", "a;//b\n", "' c"},
        {"\"\";", string, ";", "", "\";"},
        {"word; 'a'", string, ";", "", " 'a'"},
        {"'a'", string, "'", "a", "'"},
        {"'a\\'", string, ";", "a\\'", ""},
        {"\\'a 'b'", string, ";", "b", "'"},
        {"'a\x03' b", string, ";", "a", "\x03' b"},
        {"", string, ";", "", ""},
    };
    for (const Case& each : cases) {
        ShaderReader reader(each.source);
        EXPECT_EQ((reader.*each.read)(each.stop), each.result) << each.source;
        EXPECT_STREQ(reader.currentText(), each.rest) << each.source;
    }
}

TEST_F(ShaderReaderTest, leavesAStringBehindItsClosingQuote) {
    ShaderReader reader("'{' {");
    EXPECT_EQ(reader.readString(";"), "{");
    EXPECT_EQ(reader.state, ShaderReader::SingleQuoted);
    EXPECT_TRUE(reader.advance(1));
    EXPECT_EQ(reader.state, ShaderReader::Code);
    EXPECT_FALSE(reader.advance(-1));
    EXPECT_EQ(reader.braceDepth, 1);
    EXPECT_EQ(reader.state, ShaderReader::End);
    ShaderReader::Parser parser;
    reader.parse(parser);
    EXPECT_EQ(parser.text, "");
    EXPECT_EQ(reader.readIdentifier(""), "");
}

} // namespace
