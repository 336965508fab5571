#include "pbhost/commands/translate_command.h"

#include <optional>
#include <string_view>
#include <vector>

#include "engine/program/glsl_generator.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

// The shaders of one program.
struct ProgramTexts {
    NarrowString vertex;
    NarrowString fragment;
};

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

ProgramTexts kernelTexts(const pbKernelInfo& kernel, std::uint32_t order) {
    ProgramTexts texts;
    generateKernelShaders(kernel, texts.vertex, texts.fragment, order);
    return texts;
}

std::optional<ProgramTexts> nodeTexts(const pbGraphInfo& graph, std::string_view id,
                                      std::uint32_t order) {
    for (std::size_t i = 0; i < graph.nodes.size(); ++i) {
        ProgramTexts texts;
        if (nameText(graph.nodes[i].id) == id &&
            generateNodeShaders(graph, i, texts.vertex, texts.fragment, order) == 0)
            return texts;
    }
    return std::nullopt;
}

void appendNumbered(std::string& shown, const char* title, std::string_view text) {
    shown.append("---- ").append(title).append(" ----\n");
    std::size_t number = 0;
    for (const std::string_view line : splitLines(text)) {
        const std::string digits = std::to_string(++number);
        shown.append(digits.size() < 5 ? 5 - digits.size() : 0, ' ').append(digits).append("  ");
        shown.append(line).append("\n");
    }
}

std::string show(const ProgramTexts& texts, const std::string& stage) {
    if (stage == "vertex")
        return std::string(texts.vertex);
    if (stage == "fragment")
        return std::string(texts.fragment);
    std::string shown;
    appendNumbered(shown, "vertex", texts.vertex);
    shown += '\n';
    appendNumbered(shown, "fragment", texts.fragment);
    return shown;
}

std::string listNodes(const std::string& file, const pbGraphInfo& graph) {
    std::string list = file + ": the nodes, each with its kernel (choose one with --node):\n";
    for (const pbgNodeInfo& node : graph.nodes) {
        list.append("  ").append(nameText(node.id)).append("  ").append(nameText(node.name));
        list += kernelOfNode(graph, node) == nullptr ? "  (the graph has no such kernel)\n" : "\n";
    }
    return printable(list);
}

std::string translateNode(const TranslateRequest& request, const pbGraphInfo& graph) {
    const auto texts = nodeTexts(graph, request.node, request.order);
    if (!texts)
        throw Failure(ExitCode::BadKernel, request.file + ": no node \"" + request.node +
                                               "\" with a kernel\n" +
                                               listNodes(request.file, graph));
    return show(*texts, request.stage);
}

} // namespace

std::string translate(const TranslateRequest& request) {
    if (!isGraphFile(request.file) && !request.node.empty())
        throw Failure(ExitCode::Usage,
                      "--node requires a graph (.pbg); " + request.file + " is a kernel");
    hostkit::Host host;
    const EffectFile model(host, request.file);
    if (!model.isGraph)
        return show(kernelTexts(model.kernel, request.order), request.stage);
    const pbGraphInfo& graph = model.graph;
    if (!request.node.empty())
        return translateNode(request, graph);
    if (!request.stage.empty())
        throw Failure(ExitCode::Usage,
                      "--stage of a graph requires --node\n" + listNodes(request.file, graph));
    return listNodes(request.file, graph);
}

} // namespace pbhost
