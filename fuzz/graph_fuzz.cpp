// Target: a graph document, parsed into the model and translated to the programs of each node.
#include "engine/program/glsl_generator.h"
#include "fuzz/fuzz_support.h"
#include "pixelbender/graph_reader.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::inCommand([&] {
        pbGraphInfo graph;
        readGraphText(fuzz::textOf(data, size), graph);
        for (std::size_t i = 0; i < graph.nodes.size(); ++i) {
            NarrowString vertexText;
            NarrowString fragmentText;
            const int result = generateNodeShaders(graph, i, vertexText, fragmentText, 18);
            fuzz::require((result == 0) == (kernelOfNode(graph, graph.nodes[i]) != nullptr),
                          "a node's result does not say whether it has a kernel");
            fuzz::require((result == 0) == !fragmentText.empty(), "a node's text is missing");
        }
    });
    return 0;
}
