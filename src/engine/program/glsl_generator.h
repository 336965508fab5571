// Generates the two shaders of a program from a kernel: a fixed prelude, the kernel's body, a
// `main`. There is no other translation; what the prelude does not define is an error of the GLSL
// compiler.
//
// Needs no context. Texts are on the host's heap, so a command must run. `swizzle` is an index into
// channelOrders, 0 to 23; for other values the texts have no swizzles.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelbender/model.h"

// The largest number of inputs of a program; they use the texture units 1 to 8.
inline constexpr std::size_t maxKernelInputs = 8;

// Where the copied texts begin in a generated one. They follow each other: the fixed texts, the
// kernel's shaderText, the node's evaluateParametersCode (empty for a kernel and for a node without
// expressions), the generated `main`.
struct ShaderLayout {
    std::size_t body = 0;
    std::size_t expressions = 0;
};
struct ProgramLayout {
    ShaderLayout vertex;
    ShaderLayout fragment;
};

// For a standalone kernel: its parameters are uniforms. Always returns 0.
int generateKernelShaders(const pbKernelInfo& kernel, NarrowString& vertexText,
                          NarrowString& fragmentText, std::uint32_t swizzle,
                          ProgramLayout* layout = nullptr);

// For a node of a graph: the graph's parameters are uniforms, and the kernel's are computed from
// them at the start of each shader. Returns 0, or -1 with the texts unchanged if no kernel has the
// node's name. nodeIndex must be below the number of nodes.
int generateNodeShaders(const pbGraphInfo& graph, std::size_t nodeIndex, NarrowString& vertexText,
                        NarrowString& fragmentText, std::uint32_t swizzle,
                        ProgramLayout* layout = nullptr);

// The implementation of both; graph and node are used only if standalone is false. `layout`, which
// may be null, is filled.
void generateShaders(const pbKernelInfo& kernel, const pbGraphInfo* graph, const pbgNodeInfo* node,
                     bool standalone, std::uint32_t swizzle, NarrowString& vertexText,
                     NarrowString& fragmentText, ProgramLayout* layout = nullptr);

// The name of the float varying that passes an int or bool dependent, because GLSL has no varyings
// of these types: the prefix `tvek_`, or `_tvek` for a name that begins with `_`.
NarrowString dependentVaryingName(std::string_view name);

// The kernel that a node runs: the first with its name; null if there is none.
const pbKernelInfo* kernelOfNode(const pbGraphInfo& graph, const pbgNodeInfo& node);
