// Framebuffers as objects: one without buffers, and one that owns a colour and a depth buffer.
//
// Everything, including construction and destruction, needs the device's context current and all
// features that `missingFeature` checks. Whether a framebuffer is complete is not checked.
#pragma once

#include <memory>

#include "gpu/kgl_buffers.h"

// Size and formats are set on the attachments, so the setters of the base class do nothing here.
class kglFrameBuffer : public kglBufferObject {
public:
    kglFrameBuffer();
    ~kglFrameBuffer() override;

    using kglBufferObject::setSize;
    // Sets the size of the owned buffers; this class owns none. `type` is that of the components.
    virtual void setSize(int, int, unsigned int /*type*/) {}
};

enum class kglBufferKind { Texture = 0, RenderBuffer = 1 };

// Starts with buffers of 1 by 1, colour as four 32-bit floats. A depth texture has no storage yet,
// so the target is incomplete: set its `format` to GL_DEPTH_COMPONENT, then the target's size.
class kglRenderTarget : public kglFrameBuffer {
public:
    // Throws the `long` 4 if there is no memory; no OpenGL name is leaked.
    kglRenderTarget(kglBufferKind colorKind, kglBufferKind depthKind);
    ~kglRenderTarget() override;

    using kglFrameBuffer::setSize;
    // Sets the size of both buffers. The contents are lost.
    void setSize(int width, int height, unsigned int type) override;

    // Valid as long as the target.
    kglBufferObject& getColorBuffer() const { return *colorBuffer; }
    kglBufferObject& getDepthBuffer() const { return *depthBuffer; }

private:
    std::unique_ptr<kglBufferObject> colorBuffer;
    std::unique_ptr<kglBufferObject> depthBuffer;
};
