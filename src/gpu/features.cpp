#include "gpu/features.h"

#include <algorithm>
#include <array>

#include <GL/glew.h>

#include "platform/wgl.h"

namespace {

struct Feature {
    const char* name;
    bool (*isThere)(); // reads the result of glewInit
};

// glewInit's own result is not used: without a screen it reports an error after it has loaded
// everything.
#define ENTRY_POINT(name)                                                                          \
    Feature {                                                                                      \
#name, [] { return (name) != nullptr; }                                                    \
    }
#define EXTENSION(name)                                                                            \
    Feature {                                                                                      \
        "GL_" #name, [] { return GLEW_##name == GL_TRUE; }                                         \
    }

constexpr auto features = std::to_array<Feature>({
    ENTRY_POINT(glActiveTexture),
    ENTRY_POINT(glCreateShader),
    ENTRY_POINT(glShaderSource),
    ENTRY_POINT(glCompileShader),
    ENTRY_POINT(glGetShaderiv),
    ENTRY_POINT(glGetShaderInfoLog),
    ENTRY_POINT(glDeleteShader),
    ENTRY_POINT(glCreateProgram),
    ENTRY_POINT(glAttachShader),
    ENTRY_POINT(glLinkProgram),
    ENTRY_POINT(glGetProgramiv),
    ENTRY_POINT(glGetProgramInfoLog),
    ENTRY_POINT(glUseProgram),
    ENTRY_POINT(glDeleteProgram),
    ENTRY_POINT(glGetUniformLocation),
    ENTRY_POINT(glUniform1i),
    ENTRY_POINT(glUniform2f),
    ENTRY_POINT(glUniform1iv),
    ENTRY_POINT(glUniform2iv),
    ENTRY_POINT(glUniform3iv),
    ENTRY_POINT(glUniform4iv),
    ENTRY_POINT(glUniform1fv),
    ENTRY_POINT(glUniform2fv),
    ENTRY_POINT(glUniform3fv),
    ENTRY_POINT(glUniform4fv),
    ENTRY_POINT(glUniformMatrix2fv),
    ENTRY_POINT(glUniformMatrix3fv),
    ENTRY_POINT(glUniformMatrix4fv),
    EXTENSION(EXT_framebuffer_object),
    ENTRY_POINT(glGenFramebuffersEXT),
    ENTRY_POINT(glBindFramebufferEXT),
    ENTRY_POINT(glFramebufferTexture2DEXT),
    ENTRY_POINT(glDeleteFramebuffersEXT),
    EXTENSION(ARB_texture_float),
    EXTENSION(EXT_abgr),
});

#undef ENTRY_POINT
#undef EXTENSION

} // namespace

const char* missingFeature() {
    if (wglGetCurrentContext() == nullptr)
        return "an OpenGL context";
    const auto missing =
        std::ranges::find_if(features, [](const Feature& feature) { return !feature.isThere(); });
    return missing == features.end() ? nullptr : missing->name;
}
