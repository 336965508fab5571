// Replaces the driver's glTexImage2D in the benchmarks to count texture storage.
#include <dlfcn.h>

#include "bench/texture_bytes.h"

// The program's own definition takes precedence over the driver's.
extern "C" void GLAPIENTRY glTexImage2D(GLenum target, GLint level, GLint internalFormat,
                                        GLsizei width, GLsizei height, GLint border, GLenum format,
                                        GLenum type, const void* pixels) {
    static const auto real =
        reinterpret_cast<decltype(&glTexImage2D)>(::dlsym(RTLD_NEXT, "glTexImage2D"));
    textureBytes::count(width, height, internalFormat);
    real(target, level, internalFormat, width, height, border, format, type, pixels);
}
