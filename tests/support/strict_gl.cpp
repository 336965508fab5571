#include "tests/support/strict_gl.h"

#include <utility>
#include <vector>

#include "bench/texture_bytes.h"

#ifdef _WIN32
#include "platform/win32.h"
#else
#include <dlfcn.h>
#endif

namespace {

int uploads = 0;

template<class Function>
Function driversOwn(const char* name) {
#ifdef _WIN32
    void* found = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("opengl32.dll"), name));
#else
    void* found = dlsym(RTLD_NEXT, name);
#endif
    return reinterpret_cast<Function>(found);
}

constexpr std::size_t largestPixel = 16; // bytes

} // namespace

int takeUploads() {
    return std::exchange(uploads, 0);
}

// These two definitions take precedence over the driver's functions.

void GLAPIENTRY glTexImage2D(GLenum target, GLint level, GLint internalFormat, GLsizei width,
                             GLsizei height, GLint border, GLenum format, GLenum type,
                             const void* pixels) {
    static const auto real = driversOwn<decltype(&glTexImage2D)>("glTexImage2D");
    textureBytes::count(width, height, internalFormat);
    std::vector<char> remains;
    GLint rowLength = 0;
    glGetIntegerv(GL_UNPACK_ROW_LENGTH, &rowLength);
    if (pixels == nullptr) {
        remains.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                           largestPixel,
                       '\x3f'); // 0.75 as a float
        pixels = remains.data();
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    }
    real(target, level, internalFormat, width, height, border, format, type, pixels);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, rowLength);
}

void GLAPIENTRY glTexSubImage2D(GLenum target, GLint level, GLint x, GLint y, GLsizei width,
                                GLsizei height, GLenum format, GLenum type, const void* pixels) {
    static const auto real = driversOwn<decltype(&glTexSubImage2D)>("glTexSubImage2D");
    ++uploads;
    real(target, level, x, y, width, height, format, type, pixels);
}
