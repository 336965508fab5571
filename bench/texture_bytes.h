// Counts the bytes of texture storage that are requested from OpenGL. A replacement of glTexImage2D
// (bench/counted_textures.cpp, tests/support/strict_gl.cpp) calls `count` for each call.
#pragma once

#include <GL/glew.h>

#include <cstdint>

namespace textureBytes {

// Resets the count to zero. Deleted textures stay counted.
void start();

// Counts the storage of the texture that is bound.
void count(GLsizei width, GLsizei height, GLint internalFormat);

// The largest number of bytes allocated at one time since `start`.
std::uint64_t peak();

} // namespace textureBytes
