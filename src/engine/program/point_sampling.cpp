#include "engine/program/point_sampling.h"

#include <array>

#include "pixelbender/shader_reader.h"

namespace {

// Follows each call of a sampling function through `( name , outCoord ( ) )`.
class SamplingParser : public ShaderReader::Parser {
public:
    bool parse(ShaderReader&, std::int32_t, ShaderReader::TokenKind, ShaderReader::State,
               std::string_view token) override;

    bool isEveryCallCentred() const { return isCentred_ && expected_ == 0; }

private:
    bool isCentred_ = true;
    std::size_t expected_ = 0; // the next expected token of a centred call; 0: outside a call
};

constexpr std::string_view anyName;
constexpr std::array<std::string_view, 8> centredCall = {"",         "(", anyName, ",",
                                                         "outCoord", "(", ")",     ")"};

bool isFilteringFunction(std::string_view token) {
    return token == "sample" || token == "sampleLinear" || token.starts_with("texture");
}

bool SamplingParser::parse(ShaderReader&, std::int32_t, ShaderReader::TokenKind kind,
                           ShaderReader::State, std::string_view token) {
    if (token == " " || token == "\n" || kind == ShaderReader::Whitespace)
        return false;
    if (isFilteringFunction(token)) {
        isCentred_ = isCentred_ && expected_ == 0;
        expected_ = 1;
    } else if (expected_ != 0) {
        const std::string_view wanted = centredCall[expected_];
        isCentred_ =
            isCentred_ && (wanted == token || (wanted.empty() && kind == ShaderReader::Identifier));
        expected_ = (expected_ + 1) % centredCall.size();
    }
    return !isCentred_;
}

} // namespace

bool readsOnlyPixelCentres(const NarrowString& shaderText) {
    ShaderReader reader(shaderText);
    SamplingParser parser;
    reader.parse(parser);
    return parser.isEveryCallCentred();
}
