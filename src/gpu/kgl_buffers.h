// Renderbuffers and textures as objects that a framebuffer may be given.
//
// Each owns one OpenGL name from its constructor to its destructor and never copies it. All of
// this, making and destroying included, needs the device's context current, with nothing missing
// of what `missingFeature` asks for. What an operation binds stays bound. OpenGL numbers (formats,
// types, targets, attachments) stand as OpenGL names them; sizes are in pixels.
#pragma once

#include "support/heap.h"

class kglFrameBuffer;

// What a framebuffer and its attachments have in common. An operation that makes no sense for a
// class does nothing there.
class kglBufferObject : public aeBase {
public:
    virtual unsigned int getName() const { return objectName; }
    // Gives the buffer fresh storage, with the format and type set before.
    virtual void setSize(int, int) {}
    // Afterwards the window is bound, not the framebuffer.
    virtual void attachTo(const kglFrameBuffer&, unsigned int /*attachment*/) const {}
    virtual void setInternalFormat(int) {}
    virtual void setType(unsigned int) {}

protected:
    explicit kglBufferObject(unsigned int newName) : objectName(newName) {}

    const unsigned int objectName;
};

class kglRenderBuffer : public kglBufferObject {
public:
    kglRenderBuffer();
    ~kglRenderBuffer() override;

    void setSize(int width, int height) override;
    void attachTo(const kglFrameBuffer& framebuffer, unsigned int attachment) const override;
    void setInternalFormat(int format) override { internalFormat = format; }

private:
    int internalFormat;
};

// The fields count from the next `setSize` or `attachTo` on. Depth needs GL_DEPTH_COMPONENT in
// `format` too: with the GL_RGBA of the start, OpenGL refuses storage to a depth texture.
class kglTextureBuffer : public kglBufferObject {
public:
    explicit kglTextureBuffer(unsigned int target);
    ~kglTextureBuffer() override;

    // Edges clamp, samples between pixels are blended.
    void setDefaultParameters() const;

    // Only GL_TEXTURE_2D gets storage; the errors before and after it go to the debug output.
    void setSize(int newWidth, int newHeight) override;
    // Attaches 1D, 2D and 3D textures; no others.
    void attachTo(const kglFrameBuffer& framebuffer, unsigned int attachment) const override;
    void setInternalFormat(int newFormat) override { internalFormat = newFormat; }
    void setType(unsigned int newType) override { type = newType; }

    int level = 0; // of the mipmaps
    int internalFormat;
    int width = 0;
    int height = 0;
    int border = 0;
    unsigned int format;
    const unsigned int target;
    unsigned int type;
    int zOffset = 0; // the layer of a 3D texture that is attached
};
