// Texts of any length for the readers: kernels as people write them, and texts that are out to make
// a reader slow.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace bench {

// A kernel of about that many bytes that the GLSL compiler would take, with parameters, comments
// and functions in equal parts.
std::string realisticKernel(std::size_t bytes);

struct HostileText {
    const char* name;
    std::string (*make)(std::size_t bytes);
};

extern const std::array<HostileText, 7> hostileKernels;
extern const std::array<HostileText, 6> hostileGraphs;

} // namespace bench
