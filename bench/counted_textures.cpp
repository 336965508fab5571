// Stands in front of the driver's glTexImage2D in the benchmarks, and counts the storage.
#include <dlfcn.h>

#include "bench/texture_bytes.h"

// Of the definitions of this name the program's own comes first.
extern "C" void GLAPIENTRY glTexImage2D(GLenum target, GLint level, GLint internalFormat,
                                        GLsizei width, GLsizei height, GLint border, GLenum format,
                                        GLenum type, const void* pixels) {
    static const auto real =
        reinterpret_cast<decltype(&glTexImage2D)>(::dlsym(RTLD_NEXT, "glTexImage2D"));
    textureBytes::count(width, height, internalFormat);
    real(target, level, internalFormat, width, height, border, format, type, pixels);
}
