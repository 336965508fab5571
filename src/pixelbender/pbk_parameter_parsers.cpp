#include "pixelbender/pbk_parameter_parsers.h"

#include "pixelbender/metadata_keys.h"
#include "support/numbers.h"

namespace {

bool isQuoted(ShaderReader::State state) {
    return state == ShaderReader::SingleQuoted || state == ShaderReader::DoubleQuoted;
}

} // namespace

PBKParser::ParameterParser::ParameterParser(pbElementType type) : elementType_(type) {
    parameter_.type = type;
}

bool PBKParser::ParameterParser::parse(ShaderReader& reader, std::int32_t, TokenKind kind, State,
                                       std::string_view token) {
    if (kind == Identifier && parameter_.wholeName.empty()) {
        parameter_.setName(token);
        text.append(" ");
        take(reader, token);
    } else if (token == ";" || token == ",") {
        static_cast<PBKParser&>(reader).info->parameters.push_back(parameter_);
        take(reader, token);
        if (token == ";")
            return true;
        resetForNextDeclarator();
    } else if (token == "<") {
        ParameterMetaDataParser parser(parameter_);
        reader.parse(parser);
    }
    return false;
}

// Clears the flags only: the values and the two texts are kept for the next declarator.
void PBKParser::ParameterParser::resetForNextDeclarator() {
    parameter_.type = elementType_;
    parameter_.setName("");
    copyName(parameter_.displayName, "");
    copyName(parameter_.aeDisplayName, "");
    parameter_.defaultValue.isSet = false;
    parameter_.minValue.isSet = false;
    parameter_.maxValue.isSet = false;
    parameter_.aePointRelativeDefaultValue.isSet = false;
    parameter_.parameterType = pbParameterNone;
    parameter_.aeUIControl = pbControlNone;
}

bool PBKParser::ParameterMetaDataParser::parse(ShaderReader& reader, std::int32_t, TokenKind,
                                               State state, std::string_view token) {
    if (token == ">" && !isQuoted(state))
        return true;
    if (token == pointDefaultKey) {
        const pbValue point = readValue(reader, pbTypeFloat2);
        parameter_->aePointRelativeDefaultValue = {true, point.floats[0], point.floats[1]};
    } else if (const auto field = valueField(token)) {
        parameter_->*field = {true, readValue(reader, parameter_->type)};
    } else if (const auto set = parameterTextSetter(token)) {
        set(*parameter_, reader.readString(";"));
    }
    return false;
}

pbValue PBKParser::ParameterMetaDataParser::readValue(ShaderReader& reader, pbElementType type) {
    ParameterMetaDataValueParser parser(type);
    reader.parse(parser);
    return parser.value;
}

bool PBKParser::ParameterMetaDataValueParser::parse(ShaderReader&, std::int32_t, TokenKind kind,
                                                    State state, std::string_view token) {
    const bool isTruthWord = token == "true" || token == "false";
    if (kind == Number || isTruthWord) {
        if (index_ < componentCount(elementType_))
            store(token, isTruthWord);
        ++index_;
        positive_ = true;
    } else if (!isQuoted(state)) {
        if (token == ";")
            return true;
        if (token == "-")
            positive_ = false;
        else if (token == ",")
            positive_ = true;
    }
    return false;
}

void PBKParser::ParameterMetaDataValueParser::store(std::string_view token, bool isTruthWord) {
    const auto at = static_cast<std::size_t>(index_);
    const bool isTrue = token == "true";
    switch (componentBase(elementType_)) {
    case pbScalarInt:
        value.ints[at] = isTruthWord ? isTrue : leadingInteger(token, !positive_);
        break;
    case pbScalarFloat:
        value.floats[at] =
            isTruthWord ? (isTrue ? 1.0F : 0.0F) : (positive_ ? 1.0F : -1.0F) * leadingFloat(token);
        break;
    case pbScalarBool:
        value.bytes[at] = isTruthWord ? isTrue : leadingFloat(token) != 0;
        break;
    case pbScalarNone:
        break;
    }
}
