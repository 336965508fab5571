// Counts the bytes of texture storage that the program's own code asks OpenGL for. Whoever links
// this calls OpenGL's glTexImage2D through a counter. Deleted textures count on until `start`.
#pragma once

#include <cstdint>

namespace textureBytes {

// From here on textures that are specified count; none does yet.
void start();

// The most bytes that were specified at one time since the start.
std::uint64_t peak();

} // namespace textureBytes
