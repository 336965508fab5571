// Scales 16-bit channels between the host's white, 32768, and OpenGL's, 65535. Gives what OpenGL's
// pixel transfer gives with a scale of 2.0 on the way in and of 0.5 on the way out, without the
// slow path that drivers have for it. Plain memory: needs neither a context nor a running command.
#pragma once

#include <cstddef>
#include <cstdint>

// Twice each channel; from 32768 up 65535. The two arrays do not overlap.
void doubleChannels(const std::uint16_t* from, std::uint16_t* to, std::size_t count);

// Half of each channel, in place; what lies between two values goes to the even one.
void halveChannels(std::uint16_t* channels, std::size_t count);
