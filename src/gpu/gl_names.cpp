#include "gpu/gl_names.h"

#include <GL/glew.h>

unsigned int TextureKind::generate() {
    GLuint name = 0;
    glGenTextures(1, &name);
    return name;
}

void TextureKind::destroy(unsigned int name) {
    glDeleteTextures(1, &name);
}

unsigned int FramebufferKind::generate() {
    GLuint name = 0;
    glGenFramebuffersEXT(1, &name);
    return name;
}

void FramebufferKind::destroy(unsigned int name) {
    glDeleteFramebuffersEXT(1, &name);
}

unsigned int ProgramKind::generate() {
    return glCreateProgram();
}

void ProgramKind::destroy(unsigned int name) {
    glDeleteProgram(name);
}

unsigned int ShaderKind::generate(unsigned int stage) {
    return glCreateShader(stage);
}

void ShaderKind::destroy(unsigned int name) {
    glDeleteShader(name);
}
