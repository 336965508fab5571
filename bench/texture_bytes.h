// Counts the bytes of texture storage that code asks OpenGL for: whoever stands in front of
// glTexImage2D (bench/counted_textures.cpp, tests/support/strict_gl.cpp) tells each call.
#pragma once

#include <GL/glew.h>

#include <cstdint>

namespace textureBytes {

// From here on textures that are specified count; none does yet. Deleted ones count on.
void start();

// The storage of the texture that is bound now.
void count(GLsizei width, GLsizei height, GLint internalFormat);

// The most bytes that were specified at one time since the start.
std::uint64_t peak();

} // namespace textureBytes
