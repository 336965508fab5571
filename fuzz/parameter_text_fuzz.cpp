// Target: a node's parameter expressions (evaluateParameters), rewritten and translated to the
// node's shaders.
#include "engine/program/glsl_generator.h"
#include "fuzz/fuzz_support.h"
#include "pixelbender/pbk_parser.h"

namespace {

pbParameter makeParameter(std::string_view name) {
    pbParameter parameter;
    parameter.type = pbTypeFloat;
    parameter.setName(name);
    return parameter;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::inCommand([&] {
        pbGraphInfo graph;
        graph.parameters.push_back(makeParameter("amount"));
        graph.parameters.push_back(makeParameter("_size"));
        graph.kernelSources.emplace_back("kernel blur <> { parameter float radius; input image4 s;"
                                         "output pixel4 d; void evaluatePixel() { d = s; } }");
        pbgNodeInfo& node = graph.nodes.emplace_back();
        copyName(node.id, "rows");
        copyName(node.name, "blur");
        node.evaluateParametersText = fuzz::textOf(data, size);
        graph.parseContents();
        NarrowString vertexText;
        NarrowString fragmentText;
        fuzz::require(generateNodeShaders(graph, 0, vertexText, fragmentText, 18) == 0,
                      "the node lost its kernel");
    });
    return 0;
}
