// Generated texts of any length for the parsers: realistic kernels, and malformed texts that could
// make a parser slow.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace bench {

// A valid kernel of about that many bytes, with parameters, comments and functions in equal parts.
std::string realisticKernel(std::size_t bytes);

struct MalformedText {
    const char* name;
    std::string (*make)(std::size_t bytes);
};

extern const std::array<MalformedText, 7> malformedKernels;
extern const std::array<MalformedText, 6> malformedGraphs;

} // namespace bench
