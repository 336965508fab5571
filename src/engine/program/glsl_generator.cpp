#include "engine/program/glsl_generator.h"

#include "engine/pixels/channel_order.h"
#include "engine/program/glsl_texts.h"

namespace {

struct ProgramSource {
    const pbKernelInfo& kernel;
    const pbGraphInfo* graph;
    const pbgNodeInfo* node;
    bool standalone;
    std::uint32_t swizzle;
};

void appendInputCount(NarrowString& text, std::size_t count) {
    text += "#define tvek__INPUT_MAX ";
    if (count <= maxKernelInputs)
        text += static_cast<char>('0' + (count == 0 ? 1 : count));
    text += '\n';
}

template<class Action>
void forEachCarriedDependent(const pbKernelInfo& kernel, Action action) {
    for (const pbVariable& dependent : kernel.dependents)
        if (isIntOrBool(dependent.type))
            action(nameText(dependent.name), dependent.type);
}

void appendVaryings(NarrowString& text, const pbKernelInfo& kernel) {
    forEachCarriedDependent(kernel, [&](std::string_view name, pbElementType type) {
        text.append("varying ").append(glslCarrierName(type)).append(" ");
        text.append(dependentVaryingName(name)).append(";\n");
    });
}

void appendParameterFunction(NarrowString& text, const ProgramSource& source,
                             ShaderLayout& layout) {
    for (const pbParameter& parameter : source.graph->parameters) {
        text.append("uniform ").append(elementTypeName(parameter.type)).append(" ");
        text.append(graphParameterName(parameter.wholeName)).append(";\n");
    }
    layout.expressions = text.size();
    if (source.node->evaluateParametersCode.empty())
        text += "void evaluateParameters(){}\n";
    else
        text += source.node->evaluateParametersCode;
}

NarrowString commonText(const ProgramSource& source, ShaderLayout& layout) {
    NarrowString text(source.standalone ? "#define parameter uniform\n" : "#define parameter\n");
    appendInputCount(text, source.kernel.inputs.size());
    if (source.swizzle < channelOrders.size()) {
        text.append("#define tvek_SWIZZLE_IN ").append(channelOrders[source.swizzle].in);
        text += '\n';
    }
    text.append(glslDefinitions).append("\n").append(glslPrelude).append("\n\n");
    layout.body = text.size();
    text.append(source.kernel.shaderText).append("\n\n");
    appendVaryings(text, source.kernel);
    layout.expressions = text.size();
    if (!source.standalone)
        appendParameterFunction(text, source, layout);
    return text;
}

void appendVertexMain(NarrowString& text, const ProgramSource& source) {
    text += "\nvoid main(void)\n{\n";
    if (!source.kernel.dependents.empty()) {
        if (!source.standalone)
            text += "\tevaluateParameters();\n";
        text += "\tevaluateDependents();\n";
        forEachCarriedDependent(source.kernel, [&](std::string_view name, pbElementType type) {
            text.append("\t").append(dependentVaryingName(name)).append(" = ");
            text.append(glslCarrierName(type)).append("(").append(name).append(");\n");
        });
    }
    text += "\ttvek_vertexPosition = gl_Vertex;\n";
    text += "\tgl_Position = ftransform();\n";
    text += "}\n";
}

void appendFragmentMain(NarrowString& text, const ProgramSource& source) {
    text += "\nvoid main(void)\n{\n";
    if (!source.standalone)
        text += "\tevaluateParameters();\n";
    forEachCarriedDependent(source.kernel, [&](std::string_view name, pbElementType type) {
        text.append("\t").append(name).append(" = ").append(elementTypeName(type)).append("(");
        text.append(dependentVaryingName(name)).append(");\n");
    });
    text += "\tevaluatePixel();\n";
    text.append("\tgl_FragColor = ").append(nameText(source.kernel.output.name));
    if (source.swizzle < channelOrders.size())
        text += channelOrders[source.swizzle].out;
    text += ";\n}\n";
}

} // namespace

void generateShaders(const pbKernelInfo& kernel, const pbGraphInfo* graph, const pbgNodeInfo* node,
                     bool standalone, std::uint32_t swizzle, NarrowString& vertexText,
                     NarrowString& fragmentText, ProgramLayout* layout) {
    const ProgramSource source{kernel, graph, node, standalone, swizzle};
    ShaderLayout common;
    fragmentText = commonText(source, common);
    vertexText = "\n#define tvek_VERTEX_SHADER\n";
    const std::size_t before = vertexText.size();
    if (layout != nullptr)
        *layout = {{before + common.body, before + common.expressions}, common};
    vertexText += fragmentText;
    appendVertexMain(vertexText, source);
    appendFragmentMain(fragmentText, source);
}

int generateKernelShaders(const pbKernelInfo& kernel, NarrowString& vertexText,
                          NarrowString& fragmentText, std::uint32_t swizzle,
                          ProgramLayout* layout) {
    generateShaders(kernel, nullptr, nullptr, true, swizzle, vertexText, fragmentText, layout);
    return 0;
}

int generateNodeShaders(const pbGraphInfo& graph, std::size_t nodeIndex, NarrowString& vertexText,
                        NarrowString& fragmentText, std::uint32_t swizzle, ProgramLayout* layout) {
    const pbgNodeInfo& node = graph.nodes[nodeIndex];
    const pbKernelInfo* kernel = kernelOfNode(graph, node);
    if (kernel == nullptr)
        return -1;
    generateShaders(*kernel, &graph, &node, false, swizzle, vertexText, fragmentText, layout);
    return 0;
}

NarrowString dependentVaryingName(std::string_view name) {
    NarrowString varying(name.starts_with('_') ? "_tvek" : "tvek_");
    return varying.append(name);
}

const pbKernelInfo* kernelOfNode(const pbGraphInfo& graph, const pbgNodeInfo& node) {
    for (const pbKernelInfo& kernel : graph.kernels)
        if (nameText(kernel.name) == nameText(node.name))
            return &kernel;
    return nullptr;
}
