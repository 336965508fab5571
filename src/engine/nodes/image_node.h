// A node that holds one input image of the frame.
#pragma once

#include "engine/nodes/node_base.h"
#include "engine/pixels/render_texture.h"

class ImageNode : public NodeBase {
public:
    ImageNode(pbGraph& owner, std::string_view imageName);

    bool isKernel() const override { return false; }
    // Reads the texture from its first pixel, cut to the target's size, regardless of `done`.
    void readBack(const FrameDescription& target) override;
    // Uploads the image into a transparent texture of the frame's size. Without an image for its
    // slot, the whole texture is transparent.
    void render(const FrameDescription& frame) override;
    void reset() override;
    PixelSize pixelSize(const FrameDescription& frame) const override;
    GLuint texture() const override { return target_.texture.get(); }
    RenderTexture& target() override { return target_; }

    std::int32_t slot = -1; // which image of the frame; -1: none

private:
    const ImageSlot* findImage(const FrameDescription& frame) const;

    RenderTexture target_;
};
