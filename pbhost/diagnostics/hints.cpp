#include "pbhost/diagnostics/hints.h"

#include <algorithm>
#include <string_view>

#include "engine/program/glsl_generator.h"
#include "pbhost/diagnostics/wiring.h"

namespace pbhost {

namespace {

void add(std::string& hints, std::string_view owner, std::string_view hint) {
    hints.append("  ").append(owner).append(owner.empty() ? "" : ": ").append(hint).append("\n");
}

bool defines(const pbKernelInfo& kernel, std::string_view function) {
    return kernel.shaderText.find(function) != NarrowString::npos;
}

bool leadsToOutput(const pbConnection& connection) {
    return connection.kind == ToOutputImage;
}

} // namespace

std::string hintsFor(const pbKernelInfo& kernel) {
    std::string hints;
    const std::string_view name = nameText(kernel.name);
    const bool hasBody = defines(kernel, "evaluatePixel");
    if (kernel.output.type == pbTypeNone && !hasBody) {
        add(hints, name, "no kernel was found; expected: kernel NAME < ... > { ... }");
        return hints;
    }
    if (kernel.inputs.size() > maxKernelInputs)
        add(hints, name,
            "has " + std::to_string(kernel.inputs.size()) + " inputs, and " +
                std::to_string(maxKernelInputs) + " are the most");
    if (kernel.output.type == pbTypeNone)
        add(hints, name, "the output is missing; declare it: output pixel4 dst;");
    else if (componentCount(kernel.output.type) != 4)
        add(hints, name, "the output must have four channels: output pixel4 NAME;");
    if (!hasBody)
        add(hints, name, "the function is missing: void evaluatePixel() { ... }");
    if (!kernel.dependents.empty() && !defines(kernel, "evaluateDependents"))
        add(hints, name, "dependents need a function: void evaluateDependents() { ... }");
    return hints;
}

std::string hintsFor(const pbGraphInfo& graph) {
    std::string hints;
    if (graph.nodes.empty())
        add(hints, nameText(graph.name),
            "no node was found; expected XML: <graph ...> ... </graph>");
    else if (std::none_of(graph.connections.begin(), graph.connections.end(), leadsToOutput))
        add(hints, nameText(graph.name), "no connection leads from a node to the output image");
    for (const std::string& error : checkWiring(graph).errors)
        add(hints, "", error);
    for (const pbKernelInfo& kernel : graph.kernels)
        hints += hintsFor(kernel);
    return hints;
}

} // namespace pbhost
