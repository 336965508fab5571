#include "bench/texture_bytes.h"

#define GLEW_NO_GLU
#include <GL/glew.h>
#include <dlfcn.h>

#include <algorithm>
#include <map>

namespace {

std::map<GLint, std::uint64_t> bytesOfTexture;
std::uint64_t currentBytes = 0;
std::uint64_t peakBytes = 0;

std::uint64_t bytesPerPixel(GLint internalFormat) {
    return internalFormat == GL_RGBA32F_ARB ? 16 : internalFormat == GL_RGBA16 ? 8 : 4;
}

void count(std::uint64_t bytes) {
    GLint texture = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    std::uint64_t& counted = bytesOfTexture[texture];
    currentBytes += bytes - counted;
    counted = bytes;
    peakBytes = std::max(peakBytes, currentBytes);
}

} // namespace

// Of the definitions of this name the program's own comes first.
extern "C" void GLAPIENTRY glTexImage2D(GLenum target, GLint level, GLint internalFormat,
                                        GLsizei width, GLsizei height, GLint border, GLenum format,
                                        GLenum type, const void* pixels) {
    static const auto real =
        reinterpret_cast<decltype(&glTexImage2D)>(::dlsym(RTLD_NEXT, "glTexImage2D"));
    count(static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) *
          bytesPerPixel(internalFormat));
    real(target, level, internalFormat, width, height, border, format, type, pixels);
}

namespace textureBytes {

void start() {
    bytesOfTexture.clear();
    currentBytes = peakBytes = 0;
}

std::uint64_t peak() {
    return peakBytes;
}

} // namespace textureBytes
