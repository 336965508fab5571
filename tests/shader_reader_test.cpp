// The scanner: tokens, comments, strings, directives, and its counters.
#include <string>
#include <tuple>
#include <utility>

#include "pixelbender/shader_reader.h"
#include "tests/support/running_command.h"

namespace {

// Appends each token with a letter for its kind before it and '|' after it, or "..." if the token
// is the rest of the text.
class TokenList : public ShaderReader::Parser {
public:
    bool parse(ShaderReader&, std::int32_t length, ShaderReader::TokenKind kind,
               ShaderReader::State state, std::string_view token) override {
        const bool isRest = length == -1 && state == ShaderReader::End;
        tokens += "?WNIO"[kind] + std::string(token) + (isRest ? "..." : "|");
        return false;
    }

    std::string tokens;
};

class ShaderReaderTest : public RunningCommand {};

TEST_F(ShaderReaderTest, findsTokens) {
    const std::pair<std::string, std::string> cases[] = {
        {"a==b!=c", "Ia|O=|O=|Ib|O!|O=|Ic|"},
        {"->%=::", "O-|O>|O%|O=|O:|O:|"},
        {"++--<<<=>>>=&&||*=/=", "O++|O--|O<<|O<=|O>>|O>=|O&&|O|||O*=|O/=|"},
        {"_a1 a$\t\r\n", "I_a1|W |Ia|O$|W\t|W\r|W\n|"},
        {"5. 1.2.3", "N5.|W |N1.2|N.3|"},
        {"1.5e3", "N1.5|Ie3|"},
        {"0xFFu", "N0xFF|Iu|"},
        {"a/*b\n*/c//b\r\nd", "Ia|O |Ic|O\n|W\n|Id|"},
        {"/*/a", "O |Ia|"},
        {"'a//b'\nc", "O'|Ia|O\n|Ic|"},
        {"\xEF\xBB\xBF a\x7F", "?\xEF|?\xBB|?\xBF|W |Ia|?\x7F|"},
        {std::string("a\0b\x03 c", 6), std::string("Ia|?\0|Ib|", 9)},
        {"/* '\x03 a\n", "O ..."},
        {"// a", "O\n..."},
        {"", ""},
    };
    for (const auto& [source, tokens] : cases) {
        ShaderReader reader(source);
        TokenList list;
        reader.parse(list);
        EXPECT_EQ(list.tokens, tokens) << source;
    }
}

TEST_F(ShaderReaderTest, readsTheNextOfAKind) {
    using Read = std::string_view (ShaderReader::*)(std::string_view);
    const Read identifier = &ShaderReader::readIdentifier;
    const Read number = &ShaderReader::readNumber;
    const Read string = &ShaderReader::readString;
    // source, call and stop, result, the text after the reader's position
    const std::tuple<const char*, Read, const char*, const char*, const char*> cases[] = {
        {" 12+name x", identifier, "", "name", " x"},
        {";float", identifier, ";", "", "float"},
        {"12;", identifier, "", "", ""},
        {"1 stop x", identifier, "stop", "", " x"},
        {"a 2 3", number, "2", "", " 3"},
        {": 1.5f;>", number, ">", "1.5f", ";>"},
        {"abc > 5", number, ">", "", " 5"},
        {": \"a\\\"b\";", string, ";", "a\\\"b", "\";"},
        {"'a;//b\n' c", string, ";", "a;//b\n", "' c"},
        {"word; 'a'", string, ";", "", " 'a'"},
        {"'a\\'", string, ";", "a\\'", ""},
    };
    for (const auto& [source, read, stop, result, rest] : cases) {
        ShaderReader reader(source);
        EXPECT_EQ((reader.*read)(stop), result) << source;
        EXPECT_STREQ(reader.currentText(), rest) << source;
    }
}

} // namespace
