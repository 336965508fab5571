#include "gpu/kgl_buffers.h"

#include <array>
#include <utility>

#include <GL/glew.h>

#include "gpu/device.h"
#include "gpu/gl_names.h"
#include "gpu/kgl_framebuffer.h"

namespace {

GLuint generateRenderbuffer() {
    GLuint name = 0;
    glGenRenderbuffersEXT(1, &name);
    return name;
}

} // namespace

kglRenderBuffer::kglRenderBuffer()
    : kglBufferObject(generateRenderbuffer()), internalFormat(GL_RGBA) {}

kglRenderBuffer::~kglRenderBuffer() {
    glDeleteRenderbuffersEXT(1, &objectName);
}

void kglRenderBuffer::setSize(int width, int height) {
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, objectName);
    glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, static_cast<GLenum>(internalFormat), width,
                             height);
}

void kglRenderBuffer::attachTo(const kglFrameBuffer& framebuffer, unsigned int attachment) const {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer.getName());
    glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, attachment, GL_RENDERBUFFER_EXT, objectName);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}

kglTextureBuffer::kglTextureBuffer(unsigned int newTarget)
    : kglBufferObject(TextureKind::generate()), internalFormat(GL_RGBA32F_ARB), format(GL_RGBA),
      target(newTarget), type(GL_UNSIGNED_BYTE) {}

kglTextureBuffer::~kglTextureBuffer() {
    TextureKind::destroy(objectName);
}

void kglTextureBuffer::setDefaultParameters() const {
    constexpr auto parameters = std::to_array<std::pair<GLenum, GLint>>({
        {GL_TEXTURE_WRAP_S, GL_CLAMP},
        {GL_TEXTURE_WRAP_T, GL_CLAMP},
        {GL_TEXTURE_MIN_FILTER, GL_LINEAR},
        {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
    });
    for (const auto& [parameter, value] : parameters) {
        glBindTexture(target, objectName);
        glTexParameteri(target, parameter, value);
    }
}

void kglTextureBuffer::setSize(int newWidth, int newHeight) {
    glBindTexture(target, objectName);
    width = newWidth;
    height = newHeight;
    if (target != GL_TEXTURE_2D)
        return;
    reportError();
    glTexImage2D(target, level, internalFormat, width, height, border, format, type, nullptr);
    reportError();
}

void kglTextureBuffer::attachTo(const kglFrameBuffer& framebuffer, unsigned int attachment) const {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer.getName());
    if (target == GL_TEXTURE_1D)
        glFramebufferTexture1DEXT(GL_FRAMEBUFFER_EXT, attachment, target, objectName, level);
    else if (target == GL_TEXTURE_2D)
        glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, attachment, target, objectName, level);
    else if (target == GL_TEXTURE_3D)
        glFramebufferTexture3DEXT(GL_FRAMEBUFFER_EXT, attachment, target, objectName, level,
                                  zOffset);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}
