#include "pbhost/diagnostics/mapped_file.h"

#include <algorithm>

#include "pbhost/diagnostics/kernel_tokens.h"
#include "pixelbender/pbk_parser.h"

namespace pbhost {

namespace {

// Reads a kernel again for the offsets of its text.
CopiedText mapKernel(std::string_view source) {
    CopiedText copied;
    pbKernelInfo kernel;
    PBKParser parser(source, kernel);
    parser.sourceMap = &copied.toFile;
    parser.parseKernel();
    copied.size = kernel.shaderText.size();
    return copied;
}

std::string_view idOf(const pbgNodeInfo& node) {
    return nameText(node.id);
}

} // namespace

SourceMap chained(const SourceMap& inner, const SourceMap& outer) {
    SourceMap result;
    const auto& outers = outer.stretches();
    for (const SourceMap::Stretch& stretch : inner.stretches()) {
        const std::size_t end = stretch.source + stretch.length;
        auto next = std::partition_point(outers.begin(), outers.end(), [&](const auto& each) {
            return each.at + each.length <= stretch.source;
        });
        for (; next != outers.end() && next->at < end; ++next) {
            const std::size_t from = std::max(stretch.source, next->at);
            const std::size_t to = std::min(end, next->at + next->length);
            result.add(stretch.at + (from - stretch.source), next->source + (from - next->at),
                       to - from);
        }
    }
    return result;
}

Region regionOf(const MappedProgram& program, const ShaderLayout& layout, std::size_t offset) {
    if (offset < layout.body)
        return Region::Prelude;
    if (offset < layout.body + program.body.size)
        return Region::Body;
    const bool isInExpressions =
        offset >= layout.expressions && offset < layout.expressions + program.expressions.size;
    return isInExpressions ? Region::Expressions : Region::Main;
}

MappedFile::MappedFile(const EffectFile& effectFile)
    : file(effectFile), source(file.text),
      outline(file.isGraph ? std::string_view(file.text) : std::string_view()) {
    const XmlElement* graph = outline.root("graph");
    if (graph == nullptr)
        return;
    for (const XmlElement* element : outline.children(*graph, "kernel"))
        if (element->hasText)
            kernelElements_.push_back(element);
    nodeElements_ = outline.children(*graph, "node");
}

const XmlElement* MappedFile::kernelElement(std::size_t index) const {
    const auto& sources = file.graph.kernelSources;
    const bool isSame = index < kernelElements_.size() && index < sources.size() &&
                        kernelElements_[index]->text == std::string_view(sources[index]);
    return isSame ? kernelElements_[index] : nullptr;
}

const XmlElement* MappedFile::nodeElement(std::size_t index) const {
    return index < nodeElements_.size() ? nodeElements_[index] : nullptr;
}

std::size_t MappedFile::count() const {
    return file.isGraph ? file.graph.nodes.size() : 1;
}

CopiedText MappedFile::bodyOf(std::size_t kernel) const {
    if (!file.isGraph)
        return mapKernel(file.text);
    CopiedText body = mapKernel(file.graph.kernelSources[kernel]);
    const XmlElement* element = kernelElement(kernel);
    body.toFile = element == nullptr ? SourceMap() : chained(body.toFile, element->textMap);
    return body;
}

CopiedText MappedFile::expressionsOf(std::size_t node) const {
    pbgNodeInfo read = file.graph.nodes[node];
    CopiedText expressions;
    read.parse(file.graph, &expressions.toFile);
    expressions.size = read.evaluateParametersCode.size();
    const XmlElement* element = nodeElement(node);
    const auto texts = element == nullptr ? std::vector<const XmlElement*>()
                                          : outline.children(*element, "evaluateParameters");
    const bool isSame =
        !texts.empty() && texts[0]->text == std::string_view(read.evaluateParametersText);
    expressions.toFile = isSame ? chained(expressions.toFile, texts[0]->textMap) : SourceMap();
    return expressions;
}

std::optional<MappedProgram> MappedFile::program(std::size_t index, std::uint32_t order) const {
    MappedProgram program;
    program.isNode = file.isGraph;
    if (!file.isGraph) {
        program.name = nameText(file.kernel.name);
        generateKernelShaders(file.kernel, program.vertex, program.fragment, order,
                              &program.layout);
        program.body = bodyOf(0);
        const std::string_view name = kernelName(tokensOf(file.text));
        program.kernelAt =
            name.empty() ? 0 : static_cast<std::size_t>(name.data() - file.text.data());
        program.kernelLength = name.size();
        return program;
    }
    const pbGraphInfo& graph = file.graph;
    program.name = idOf(graph.nodes[index]);
    if (generateNodeShaders(graph, index, program.vertex, program.fragment, order,
                            &program.layout) != 0)
        return std::nullopt;
    const pbKernelInfo* kernel = kernelOfNode(graph, graph.nodes[index]);
    program.body = bodyOf(static_cast<std::size_t>(kernel - graph.kernels.data()));
    program.expressions = expressionsOf(index);
    if (const XmlElement* element = nodeElement(index); element != nullptr) {
        program.kernelAt = element->at;
        program.kernelLength = element->name.size();
    }
    return program;
}

std::optional<MappedProgram> MappedFile::programNamed(std::string_view name,
                                                      std::uint32_t order) const {
    if (!file.isGraph)
        return program(0, order);
    for (std::size_t i = 0; i < file.graph.nodes.size(); ++i)
        if (idOf(file.graph.nodes[i]) == name && kernelOfNode(file.graph, file.graph.nodes[i]))
            return program(i, order);
    return std::nullopt;
}

} // namespace pbhost
