#include "pbhost/lint/lint.h"

#include "pbhost/lint/graph_lint.h"
#include "pbhost/lint/kernel_lint.h"

namespace pbhost {

namespace {

void lintText(std::string_view text, const pbKernelInfo& kernel, const SourceMap* textMap,
              DiagnosticList& list) {
    const KernelOutline outline(text);
    const bool hasControls = textMap == nullptr; // in a graph, the graph's parameters have them
    Findings findings(list, textMap);
    lintKernel(outline, kernel, hasControls, findings);
    lintMetadata(outline, kernel, hasControls, findings);
}

} // namespace

void lintFile(const MappedFile& file, DiagnosticList& list) {
    if (!file.file.isGraph)
        return lintText(file.file.text, file.file.kernel, nullptr, list);
    lintGraph(file, list);
    const pbGraphInfo& graph = file.file.graph;
    for (std::size_t i = 0; i < graph.kernels.size(); ++i)
        if (const XmlElement* element = file.kernelElement(i))
            lintText(element->text, graph.kernels[i], &element->textMap, list);
}

} // namespace pbhost
