#include "pbhost/diagnostics/kernel_tokens.h"

namespace pbhost {

namespace {

class Collector : public ShaderReader::Parser {
public:
    explicit Collector(std::string_view source) : source_(source) {}

    bool parse(ShaderReader& reader, std::int32_t length, ShaderReader::TokenKind kind,
               ShaderReader::State state, std::string_view token) override {
        // A comment's token is not a part of the text, and its length is that of the comment.
        const bool isComment = length < 0 || static_cast<std::size_t>(length) != token.size() ||
                               kind == ShaderReader::NoToken;
        if (kind == ShaderReader::Whitespace || isComment)
            return false;
        const std::size_t offset = reader.position - token.size();
        tokens.push_back({kind, state, source_.substr(offset, token.size()), offset});
        return false;
    }

    std::vector<KernelToken> tokens;

private:
    std::string_view source_;
};

} // namespace

std::vector<KernelToken> tokensOf(std::string_view source) {
    ShaderReader reader(source);
    Collector collector(source);
    reader.parse(collector);
    return std::move(collector.tokens);
}

bool isQuoted(const KernelToken& token) {
    const bool isOpen =
        token.state == ShaderReader::SingleQuoted || token.state == ShaderReader::DoubleQuoted;
    return isOpen || token.text == "\"" || token.text == "'";
}

std::string_view kernelName(const std::vector<KernelToken>& tokens) {
    std::string_view name;
    for (std::size_t i = 0; i + 1 < tokens.size(); ++i)
        if (tokens[i].text == "kernel" && tokens[i + 1].kind == ShaderReader::Identifier)
            name = tokens[i + 1].text;
    return name;
}

} // namespace pbhost
