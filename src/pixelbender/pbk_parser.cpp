#include "pixelbender/pbk_parser.h"

#include "pixelbender/metadata_keys.h"
#include "pixelbender/pbk_parameter_parsers.h"
#include "support/numbers.h"

// Collects the shader text; keywords are reserved in the whole file, at any depth.
class PBKParser::GlobalParser : public Parser {
public:
    bool parse(ShaderReader& reader, std::int32_t length, TokenKind kind, State state,
               std::string_view token) override;

private:
    bool takeBrace(const ShaderReader& reader, std::string_view token);
    bool takeKeyword(PBKParser& reader, std::string_view token);
    void takeOther(ShaderReader& reader, State state, std::string_view token);
    void takeInput(PBKParser& reader);
    void takeOutput(PBKParser& reader);
    void takeParameter(PBKParser& reader);
    void takeDependent(PBKParser& reader);

    bool inKernelBody_ = false;
    bool isFinished_ = false;
};

// The blocks between '<' and '>' before the body; each accepts all keys.
class PBKParser::MetaDataParser : public Parser {
public:
    bool parse(ShaderReader& reader, std::int32_t length, TokenKind kind, State state,
               std::string_view token) override;
};

namespace {

// A list of names of one type: consumes every token, and takes each identifier as a variable's
// name.
bool takeVariable(HostVector<pbVariable>& variables, pbElementType type, bool isIdentifier,
                  std::string_view token) {
    if (isIdentifier)
        variables.emplace_back(type, token);
    return token == ";";
}

} // namespace

class PBKParser::InputsParser : public Parser {
public:
    explicit InputsParser(pbElementType type) : elementType_(type) {}

    bool parse(ShaderReader& reader, std::int32_t, TokenKind kind, State,
               std::string_view token) override {
        take(reader, token);
        return takeVariable(static_cast<PBKParser&>(reader).info->inputs, elementType_,
                            kind == Identifier, token);
    }

private:
    pbElementType elementType_;
};

class PBKParser::DependentsParser : public Parser {
public:
    explicit DependentsParser(pbElementType type) : elementType_(type) {}

    bool parse(ShaderReader& reader, std::int32_t, TokenKind kind, State,
               std::string_view token) override {
        take(reader, token);
        return takeVariable(static_cast<PBKParser&>(reader).info->dependents, elementType_,
                            kind == Identifier, token);
    }

private:
    pbElementType elementType_;
};

// Restricts the body of evaluateDependents to the vertex shader: the fragment shader, which
// compiles the same text, gets an empty function.
class PBKParser::EvaluateDependentsParser : public Parser {
public:
    bool parse(ShaderReader& reader, std::int32_t, TokenKind, State,
               std::string_view token) override {
        const bool isEnd = token == "}" && reader.braceDepth == 1;
        if (isEnd)
            text.append("\n#endif\n");
        take(reader, token);
        if (token == "{" && reader.braceDepth == 2)
            text.append("\n#ifdef tvek_VERTEX_SHADER\n");
        return isEnd;
    }
};

void PBKParser::parseKernel() {
    GlobalParser parser;
    parse(parser);
    info->shaderText = std::move(parser.text);
}

bool PBKParser::GlobalParser::parse(ShaderReader& reader, std::int32_t, TokenKind, State state,
                                    std::string_view token) {
    if (!takeBrace(reader, token) && !takeKeyword(static_cast<PBKParser&>(reader), token))
        takeOther(reader, state, token);
    return isFinished_;
}

// The braces of the kernel itself are removed.
bool PBKParser::GlobalParser::takeBrace(const ShaderReader& reader, std::string_view token) {
    if (token == "}" && reader.braceDepth == 0) {
        isFinished_ = true;
        return true;
    }
    if (token == "{" && reader.braceDepth == 1) {
        inKernelBody_ = true;
        return true;
    }
    return false;
}

bool PBKParser::GlobalParser::takeKeyword(PBKParser& reader, std::string_view token) {
    if (token == "union") {
        text.append("tvek_"); // a reserved word of GLSL
        take(reader, token);
    } else if (token == "kernel") {
        copyName(reader.info->name, reader.readIdentifier(""));
    } else if (token == "<" && reader.braceDepth == 0) {
        MetaDataParser parser;
        reader.parse(parser);
    } else if (token == "input") {
        takeInput(reader);
    } else if (token == "output") {
        takeOutput(reader);
    } else if (token == "parameter") {
        takeParameter(reader);
    } else if (token == "dependent") {
        takeDependent(reader);
    } else if (token == "evaluateDependents") {
        take(reader, token);
        EvaluateDependentsParser parser;
        takeNested(reader, parser);
    } else {
        return false;
    }
    return true;
}

void PBKParser::GlobalParser::takeOther(ShaderReader& reader, State state, std::string_view token) {
    if (inKernelBody_) {
        take(reader, token);
    } else if (state == Preprocessor) {
        const std::string_view directive = reader.restOf(Preprocessor);
        text.append("#");
        take(reader, directive);
        text.append("\n");
        reader.advance(static_cast<std::int32_t>(directive.size()));
    }
}

void PBKParser::GlobalParser::takeInput(PBKParser& reader) {
    const std::string_view type = reader.readIdentifier(";");
    if (type.empty())
        return;
    text.append("input ");
    take(reader, type);
    InputsParser parser(elementTypeFromName(type));
    takeNested(reader, parser);
}

void PBKParser::GlobalParser::takeOutput(PBKParser& reader) {
    const std::string_view type = reader.readIdentifier(";");
    if (type.empty())
        return;
    text.append("output ");
    take(reader, type);
    const std::string_view name = reader.readIdentifier(";");
    if (name.empty())
        return;
    text.append(" ");
    take(reader, name);
    reader.info->output = pbVariable(elementTypeFromName(type), name);
}

void PBKParser::GlobalParser::takeParameter(PBKParser& reader) {
    const std::string_view type = reader.readIdentifier(";");
    if (type.empty())
        return;
    text.append("parameter ");
    take(reader, type);
    ParameterParser parser(elementTypeFromName(type));
    takeNested(reader, parser);
}

void PBKParser::GlobalParser::takeDependent(PBKParser& reader) {
    const std::string_view type = reader.readIdentifier(";");
    if (type.empty())
        return;
    const pbElementType elementType = elementTypeFromName(type);
    text.append("dependent ");
    if (!isIntOrBool(elementType))
        text.append("varying "); // floats need no other type for the varying
    take(reader, type);
    DependentsParser parser(elementType);
    takeNested(reader, parser);
}

bool PBKParser::MetaDataParser::parse(ShaderReader& reader, std::int32_t, TokenKind, State,
                                      std::string_view token) {
    pbKernelInfo& info = *static_cast<PBKParser&>(reader).info;
    if (token == ">")
        return true;
    if (token == "languageVersion")
        info.languageVersion = leadingInteger(reader.readNumber(">"));
    else if (token == versionKey)
        info.version = leadingInteger(reader.readNumber(">"));
    else if (const auto set = programTextSetter(token))
        set(info, reader.readString(">"));
    return false;
}
