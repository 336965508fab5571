#include "engine/pixels/render_texture.h"

#include <GL/glew.h>

#include <algorithm>
#include <array>

#include "engine/pixels/channel_scale.h"
#include "engine/pixels/pixel_format.h"
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

// The part of a read that is inside the texture, along one axis, in pixels of the target.
struct Span {
    std::int64_t first;
    std::int64_t end;
};

Span insideTexture(std::int32_t origin, std::uint32_t length, std::uint32_t textureLength) {
    return {std::max<std::int64_t>(0, -std::int64_t{origin}),
            std::min<std::int64_t>(length, std::int64_t{textureLength} - origin)};
}

// Halves only what OpenGL has written; the rest of the target is unchanged.
void halvePixels(const RenderTexture& target, const PixelRead& read, std::uint32_t width) {
    const Span columns = insideTexture(read.x, width, target.width);
    const Span rows = insideTexture(read.y, read.height, target.height);
    if (columns.first >= columns.end)
        return;
    for (std::int64_t y = rows.first; y < rows.end; ++y)
        halveChannels(static_cast<std::uint16_t*>(read.pixels) +
                          (y * read.rowPixels + columns.first) * read.halvedComponents,
                      static_cast<std::size_t>(columns.end - columns.first) *
                          read.halvedComponents);
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

void RenderTexture::setStorage(std::uint32_t newWidth, std::uint32_t newHeight,
                               std::uint32_t newComponentBytes, GLenum format) {
    width = newWidth;
    height = newHeight;
    componentBytes = newComponentBytes;
    isShrunk = false;
    const DepthFormat& depth = depthFormat(componentBytes);
    glBindTexture(GL_TEXTURE_2D, texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, depth.internalFormat, static_cast<GLsizei>(width),
                 static_cast<GLsizei>(height), 0, format, depth.type, nullptr);
    TVM_CHECK_GL("a texture's storage");
}

void RenderTexture::shrink() {
    if (isShrunk)
        return;
    setStorage(1, 1, 1, GL_BGRA);
    isShrunk = true;
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

void readFramebuffer(const RenderTexture& target, const PixelRead& read) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, target.framebuffer.get());
    glDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glReadBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glPixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(read.rowPixels));
    if (read.format == GL_RGB || read.format == GL_RED)
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
    const std::uint32_t width = std::min(read.width, read.rowPixels);
    glReadPixels(read.x, read.y, static_cast<GLsizei>(width), static_cast<GLsizei>(read.height),
                 read.format, read.type, read.pixels);
    TVM_CHECK_GL("the read back");
    if (read.halvedComponents != 0)
        halvePixels(target, read, width);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}
