// Renderbuffers and textures as objects that can be attached to a framebuffer.
//
// Each owns one OpenGL name from its constructor to its destructor. Everything, including
// construction and destruction, needs the device's context current and all features that
// `missingFeature` checks. Operations leave their bindings in place. Formats, types, targets and
// attachments are OpenGL's numbers; sizes are in pixels.
#pragma once

#include "support/heap.h"

class kglFrameBuffer;

// Base class of framebuffers and their attachments. An operation that does not apply to a class
// does nothing.
class kglBufferObject : public aeBase {
public:
    virtual unsigned int getName() const { return objectName; }
    // Allocates new storage with the current format and type.
    virtual void setSize(int, int) {}
    // Afterwards framebuffer 0 is bound.
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

// A change of a field takes effect with the next `setSize` or `attachTo`. A depth texture needs
// GL_DEPTH_COMPONENT in `format` too: with the initial GL_RGBA, OpenGL rejects its storage.
class kglTextureBuffer : public kglBufferObject {
public:
    explicit kglTextureBuffer(unsigned int target);
    ~kglTextureBuffer() override;

    // Clamped to the edge, with linear filtering.
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
