// Checks how the nodes of a graph are connected.
//
// The engine ignores connections that it cannot resolve and renders anyway. Here each becomes a
// message with the node, the input and the names that are available. Needs a running command.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "pixelbender/model.h"

namespace pbhost {

// What a fault is about: the graph, or one of its nodes or connections, by its index.
enum class GraphPart { Graph, Node, Connection };

struct WiringFault {
    GraphPart part;
    std::size_t index;
    const char* rule; // of diagnosticRules
    std::string text;
};

struct WiringFaults {
    // Errors, which make every picture wrong: a node without a kernel, an unknown source of the
    // output, a cycle that reaches the output.
    std::vector<WiringFault> errors;
    // Warnings, which the engine ignores: a connection to an unknown node or input, an unconnected
    // input (it reads as transparent), a cycle that does not reach the output.
    std::vector<WiringFault> warnings;
};

WiringFaults checkWiring(const pbGraphInfo& graph);

// Levenshtein distance.
std::size_t editDistance(std::string_view from, std::string_view to);

// Lists known names in quotes, the most similar to `wanted` first, shortened if there are many:
// `there are "blur", "tint"`.
std::string namesLike(std::string_view wanted, std::vector<std::string_view> known);

} // namespace pbhost
