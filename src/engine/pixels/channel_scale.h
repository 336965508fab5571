// Converts 16-bit channels between the host's white, 32768, and OpenGL's, 65535. The results equal
// those of OpenGL's pixel transfer scale of 2.0 for uploads and 0.5 for read-backs, which is slow
// in drivers. Needs neither a context nor a running command.
#pragma once

#include <cstddef>
#include <cstdint>

// Doubles each channel, with saturation at 65535. The arrays must not overlap.
void doubleChannels(const std::uint16_t* from, std::uint16_t* to, std::size_t count);

// Halves each channel in place; ties are rounded to even.
void halveChannels(std::uint16_t* channels, std::size_t count);
