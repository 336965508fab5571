// Turns a kernel into the texts of one OpenGL program by wrapping its body: a fixed prelude in
// front, a `main` behind. No other translation exists; what the prelude does not define fails in
// the GLSL compiler.
//
// Needs no context. Texts live on the host's heap, so a command must run. `swizzle` is a channel
// order index, 0 to 23; above that the texts lack their swizzles.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelbender/model.h"

// Inputs that one program can be fed with: on texture units 1 to 8.
inline constexpr std::size_t maxKernelInputs = 8;

// A kernel that stands alone: its parameters are uniforms. Always 0.
int generateKernelShaders(const pbKernelInfo& kernel, NarrowString& vertexText,
                          NarrowString& fragmentText, std::uint32_t swizzle);

// A node of a graph: the graph's parameters are uniforms, and the kernel's are worked out from them
// at the start of each shader. -1, and the texts left as they came, when no kernel bears the node's
// name; else 0. nodeIndex must be below the number of nodes.
int generateNodeShaders(const pbGraphInfo& graph, std::size_t nodeIndex, NarrowString& vertexText,
                        NarrowString& fragmentText, std::uint32_t swizzle);

// The work of both; graph and node count only when standalone is false.
void generateShaders(const pbKernelInfo& kernel, const pbGraphInfo* graph, const pbgNodeInfo* node,
                     bool standalone, std::uint32_t swizzle, NarrowString& vertexText,
                     NarrowString& fragmentText);

// The varying that carries an int or bool dependent between the stages, which GLSL cannot carry as
// such: `tvek_` in front, or `_tvek` in front of a name that begins with `_`.
NarrowString dependentVaryingName(std::string_view name);

// The kernel that a node runs: the first of its name; null when there is none.
const pbKernelInfo* kernelOfNode(const pbGraphInfo& graph, const pbgNodeInfo& node);
