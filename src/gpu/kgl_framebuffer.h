// Framebuffers as objects: a bare one, and one that owns a colour and a depth buffer.
//
// All of this, making and destroying included, needs the device's context current, with nothing
// missing of what `missingFeature` checks. Nothing here checks whether a framebuffer is complete.
#pragma once

#include <memory>

#include "gpu/kgl_buffers.h"

// Size and formats belong to the attachments, so the setters of the base class do nothing here.
class kglFrameBuffer : public kglBufferObject {
public:
    kglFrameBuffer();
    ~kglFrameBuffer() override;

    using kglBufferObject::setSize;
    // Sets the size of the buffers that the framebuffer owns; this class owns none. `type` is that
    // of the components.
    virtual void setSize(int, int, unsigned int /*type*/) {}
};

enum class kglBufferKind { Texture = 0, RenderBuffer = 1 };

// Starts with buffers of 1 by 1, colour in four 32-bit floats. A depth texture has no storage yet,
// and the target is incomplete: set its `format` to GL_DEPTH_COMPONENT, then the target's size.
class kglRenderTarget : public kglFrameBuffer {
public:
    // Throws the `long` 4 when there is no memory; no OpenGL name is then left behind.
    kglRenderTarget(kglBufferKind colorKind, kglBufferKind depthKind);
    ~kglRenderTarget() override;

    using kglFrameBuffer::setSize;
    // For colour and depth. The contents are lost.
    void setSize(int width, int height, unsigned int type) override;

    // Valid as long as the target.
    kglBufferObject& getColorBuffer() const { return *colorBuffer; }
    kglBufferObject& getDepthBuffer() const { return *depthBuffer; }

private:
    std::unique_ptr<kglBufferObject> colorBuffer;
    std::unique_ptr<kglBufferObject> depthBuffer;
};
