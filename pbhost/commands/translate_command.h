// The command `translate`: prints the generated GLSL of a kernel or graph node.
#pragma once

#include <cstdint>
#include <string>

namespace pbhost {

struct TranslateRequest {
    std::string file;
    std::string node;  // node id in a graph; empty: list the nodes
    std::string stage; // "vertex" or "fragment"; empty: both, with line numbers
    std::uint32_t order = 0;
};

// The text that the command prints. Creates a host. Throws Failure.
std::string translate(const TranslateRequest& request);

} // namespace pbhost
