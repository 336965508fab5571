// The command `translate`: prints the generated GLSL of a kernel or graph node.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pixelbender/model.h"

namespace pbhost {

// The shaders of one program.
struct ProgramTexts {
    NarrowString vertex;
    NarrowString fragment;
};

ProgramTexts kernelTexts(const pbKernelInfo& kernel, std::uint32_t order);

// The shaders of the node with that id; nothing if there is no such node or it has no kernel.
std::optional<ProgramTexts> nodeTexts(const pbGraphInfo& graph, std::string_view id,
                                      std::uint32_t order);

struct TranslateRequest {
    std::string file;
    std::string node;  // node id in a graph; empty: list the nodes
    std::string stage; // "vertex" or "fragment"; empty: both, with line numbers
    std::uint32_t order = 0;
};

// The text that the command prints. Creates a host. Throws Failure.
std::string translate(const TranslateRequest& request);

// The lines of a text, without line ends.
std::vector<std::string_view> splitLines(std::string_view text);

} // namespace pbhost
