#include "engine/render_texture.h"

#include <GL/glew.h>

#include <algorithm>
#include <array>

#include "engine/pixel_format.h"
#include "gpu/errors.h"

namespace {

GlTexture makeTexture() {
    GlTexture texture = GlTexture::create();
    glBindTexture(GL_TEXTURE_2D, texture.get());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    return texture;
}

void setChannelScale(float scale) {
    for (const GLenum channel : {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE})
        glPixelTransferf(channel, scale);
}

} // namespace

RenderTexture RenderTexture::create() {
    RenderTexture target{makeTexture(), GlFramebuffer::create()};
    target.shrink();
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, target.framebuffer.get());
    target.attach();
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    return target;
}

void RenderTexture::attach() const {
    glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D,
                              texture.get(), 0);
}

void RenderTexture::setStorage(std::uint32_t width, std::uint32_t height,
                               std::uint32_t componentBytes, GLenum format) const {
    const DepthFormat& depth = depthFormat(componentBytes);
    glBindTexture(GL_TEXTURE_2D, texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, depth.internalFormat, static_cast<GLsizei>(width),
                 static_cast<GLsizei>(height), 0, format, depth.type, nullptr);
    TVM_CHECK_GL("a texture's storage");
}

void RenderTexture::shrink() const {
    setStorage(1, 1, 1, GL_BGRA);
}

void RenderTexture::clear() const {
    glUseProgram(0);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer.get());
    attach();
    glDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glDisable(GL_DEPTH_TEST);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    TVM_CHECK_GL("a texture's clearing");
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}

GlTexture makeTransparentTexture() {
    constexpr std::array<GLubyte, 4> transparent{};
    GlTexture texture = makeTexture();
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 transparent.data());
    return texture;
}

ChannelScale::ChannelScale(float scale) : isScaled_(scale != 1.0F) {
    if (isScaled_)
        setChannelScale(scale);
}

ChannelScale::~ChannelScale() {
    if (isScaled_)
        setChannelScale(1.0F);
}

void readFramebuffer(const GlFramebuffer& framebuffer, const PixelRead& read) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer.get());
    glDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glReadBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glPixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(read.rowPixels));
    if (read.format == GL_RGB || read.format == GL_RED)
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
    {
        const ChannelScale scale(read.halve ? 0.5F : 1.0F);
        const std::uint32_t width = std::min(read.width, read.rowPixels);
        glReadPixels(read.x, read.y, static_cast<GLsizei>(width), static_cast<GLsizei>(read.height),
                     read.format, read.type, read.pixels);
    }
    TVM_CHECK_GL("the read back");
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}
