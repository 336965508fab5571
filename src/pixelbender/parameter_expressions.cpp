// Translates a node's parameter expressions, which refer to the graph's parameters and to the
// node's own, to GLSL, where all of them share one namespace.

#include "pixelbender/model.h"
#include "pixelbender/shader_reader.h"

namespace {

const char* graphPrefix(std::string_view name) {
    return name.starts_with('_') ? "_tveg" : "tveg_";
}

class EvaluateParametersParaser : public ShaderReader::Parser {
public:
    EvaluateParametersParaser(const pbGraphInfo& graphInfo, std::string_view id)
        : graph(&graphInfo), nodeId(id) {}

    bool parse(ShaderReader& reader, std::int32_t length, ShaderReader::TokenKind kind,
               ShaderReader::State state, std::string_view token) override;

private:
    const pbGraphInfo* graph;
    NarrowString nodeId;
};

bool EvaluateParametersParaser::parse(ShaderReader& reader, std::int32_t, ShaderReader::TokenKind,
                                      ShaderReader::State state, std::string_view token) {
    if (token == "}" && reader.braceDepth == 0) {
        take(reader, token);
        return true;
    }
    // Removes blank lines and indentation by tabs.
    if (text.ends_with('\n') && (token == "\t" || token == "\n"))
        return false;
    if (token == nodeId && state == ShaderReader::Preprocessor) {
        text += ' ';
    } else if (token == nodeId) { // the qualifier is removed; the name after it is kept
        take(reader, reader.readIdentifier(";"));
    } else {
        if (graph->hasParameter(token))
            text += graphPrefix(token);
        take(reader, token);
    }
    return false;
}

} // namespace

NarrowString graphParameterName(std::string_view name) {
    return NarrowString(graphPrefix(name)).append(name);
}

void pbgNodeInfo::parse(const pbGraphInfo& graph, SourceMap* map) {
    ShaderReader reader(evaluateParametersText);
    reader.sourceMap = map;
    EvaluateParametersParaser parser(graph, nameText(id));
    reader.parse(parser);
    evaluateParametersCode = std::move(parser.text);
}
