#include "pixelbender/pbk_parameter_parsers.h"

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
        text.append(" ").append(token);
    } else if (token == ";" || token == ",") {
        static_cast<PBKParser&>(reader).info->parameters.push_back(parameter_);
        text.append(token);
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
    if (!takeValueKey(reader, token))
        takeTextKey(reader, token);
    return false;
}

bool PBKParser::ParameterMetaDataParser::takeValueKey(ShaderReader& reader, std::string_view key) {
    if (key == "aePointRelativeDefaultValue") {
        ParameterMetaDataValueParser parser(pbTypeFloat2);
        reader.parse(parser);
        parameter_->aePointRelativeDefaultValue = {true, parser.value.floats[0],
                                                   parser.value.floats[1]};
        return true;
    }
    pbValueSlot* slot = nullptr;
    if (key == "defaultValue")
        slot = &parameter_->defaultValue;
    else if (key == "minValue")
        slot = &parameter_->minValue;
    else if (key == "maxValue")
        slot = &parameter_->maxValue;
    if (slot == nullptr)
        return false;
    ParameterMetaDataValueParser parser(parameter_->type);
    reader.parse(parser);
    *slot = {true, parser.value};
    return true;
}

void PBKParser::ParameterMetaDataParser::takeTextKey(ShaderReader& reader, std::string_view key) {
    if (key == "aeUIControl")
        parameter_->aeUIControl = uiControlFromName(reader.readString(";"));
    else if (key == "parameterType")
        parameter_->parameterType = parameterTypeFromName(reader.readString(";"));
    else if (key == "displayName")
        copyName(parameter_->displayName, reader.readString(";"));
    else if (key == "aeDisplayName")
        copyName(parameter_->aeDisplayName, reader.readString(";"));
    else if (key == "enumValues")
        parameter_->enumValues = reader.readString(";");
    else if (key == "aePopupString")
        parameter_->aePopupString = reader.readString(";");
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
