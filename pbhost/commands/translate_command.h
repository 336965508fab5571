// The command `translate`: writes the GLSL texts that the generator makes of a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pixelbender/model.h"

namespace pbhost {

// The texts of one program.
struct ProgramTexts {
    NarrowString vertex;
    NarrowString fragment;
};

ProgramTexts kernelTexts(const pbKernelInfo& kernel, std::uint32_t order);

// Of the node with that id; nothing when the graph has no such node, or no kernel for it.
std::optional<ProgramTexts> nodeTexts(const pbGraphInfo& graph, std::string_view id,
                                      std::uint32_t order);

struct TranslateRequest {
    std::string file;
    std::string node;  // of a graph; empty: list the nodes
    std::string stage; // "vertex", "fragment", or empty for both, with numbered lines
    std::uint32_t order = 0;
};

// What the command prints, with a host of its own. Throws Failure.
std::string translate(const TranslateRequest& request);

// The lines of a text, without their ends.
std::vector<std::string_view> splitLines(std::string_view text);

} // namespace pbhost
