#include "bench/texture_bytes.h"

#include <algorithm>
#include <map>

namespace textureBytes {

namespace {

std::map<GLint, std::uint64_t> bytesOfTexture;
std::uint64_t currentBytes = 0;
std::uint64_t peakBytes = 0;

std::uint64_t bytesPerPixel(GLint internalFormat) {
    return internalFormat == GL_RGBA32F_ARB ? 16 : internalFormat == GL_RGBA16 ? 8 : 4;
}

} // namespace

void start() {
    bytesOfTexture.clear();
    currentBytes = peakBytes = 0;
}

void count(GLsizei width, GLsizei height, GLint internalFormat) {
    GLint texture = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    const std::uint64_t bytes = static_cast<std::uint64_t>(width) *
                                static_cast<std::uint64_t>(height) * bytesPerPixel(internalFormat);
    std::uint64_t& counted = bytesOfTexture[texture];
    currentBytes += bytes - counted;
    counted = bytes;
    peakBytes = std::max(peakBytes, currentBytes);
}

std::uint64_t peak() {
    return peakBytes;
}

} // namespace textureBytes
