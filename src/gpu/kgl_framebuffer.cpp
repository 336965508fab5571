#include "gpu/kgl_framebuffer.h"

#include <GL/glew.h>

#include "gpu/gl_names.h"

namespace {

std::unique_ptr<kglBufferObject> makeBuffer(kglBufferKind kind) {
    if (kind != kglBufferKind::Texture)
        return makeObject<kglRenderBuffer>();
    auto texture = makeObject<kglTextureBuffer>(GL_TEXTURE_2D);
    texture->setDefaultParameters();
    return texture;
}

} // namespace

kglFrameBuffer::kglFrameBuffer() : kglBufferObject(FramebufferKind::generate()) {}

kglFrameBuffer::~kglFrameBuffer() {
    FramebufferKind::destroy(objectName);
}

kglRenderTarget::kglRenderTarget(kglBufferKind colorKind, kglBufferKind depthKind)
    : colorBuffer(makeBuffer(colorKind)), depthBuffer(makeBuffer(depthKind)) {
    colorBuffer->setInternalFormat(GL_RGBA32F_ARB);
    colorBuffer->setType(GL_UNSIGNED_BYTE);
    colorBuffer->setSize(1, 1);
    colorBuffer->attachTo(*this, GL_COLOR_ATTACHMENT0_EXT);
    depthBuffer->setInternalFormat(GL_DEPTH_COMPONENT);
    depthBuffer->setType(GL_FLOAT);
    depthBuffer->setSize(1, 1);
    depthBuffer->attachTo(*this, GL_DEPTH_ATTACHMENT_EXT);
}

// Destroys the colour buffer first, in the order of creation; by default the order is reversed.
kglRenderTarget::~kglRenderTarget() {
    colorBuffer.reset();
}

void kglRenderTarget::setSize(int width, int height, unsigned int type) {
    for (kglBufferObject* buffer : {colorBuffer.get(), depthBuffer.get()}) {
        buffer->setType(type);
        buffer->setSize(width, height);
    }
}
