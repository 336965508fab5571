// The parsers of a kernel's parameter declarations: name, metadata block, value lists.
//
// They are nested parsers of the kernel's reader. They keep only the names and separators of a
// declaration in the text.
#pragma once

#include "pixelbender/pbk_parser.h"

// One declaration, up to its ';'.
class PBKParser::ParameterParser : public Parser {
public:
    explicit ParameterParser(pbElementType type);

    bool parse(ShaderReader& reader, std::int32_t length, TokenKind kind, State state,
               std::string_view token) override;

private:
    void resetForNextDeclarator();

    pbElementType elementType_;
    pbParameter parameter_;
};

// The block between '<' and '>'; fills a parameter, which it does not own.
class PBKParser::ParameterMetaDataParser : public Parser {
public:
    explicit ParameterMetaDataParser(pbParameter& parameter) : parameter_(&parameter) {}

    bool parse(ShaderReader& reader, std::int32_t length, TokenKind kind, State state,
               std::string_view token) override;

private:
    static pbValue readValue(ShaderReader& reader, pbElementType type);

    pbParameter* parameter_;
};

// One value: collects the numbers, `true` and `false` among the tokens up to ';' and ignores the
// others.
class PBKParser::ParameterMetaDataValueParser : public Parser {
public:
    explicit ParameterMetaDataValueParser(pbElementType type) : elementType_(type) {}

    bool parse(ShaderReader& reader, std::int32_t length, TokenKind kind, State state,
               std::string_view token) override;

    pbValue value;

private:
    void store(std::string_view token, bool isTruthWord);

    std::int32_t index_ = 0;
    pbElementType elementType_;
    bool positive_ = true;
};
