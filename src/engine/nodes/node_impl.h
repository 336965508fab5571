// The OpenGL side of a kernel node: its program and the texture that it draws into.
//
// Construction, destruction and all operations need the device's context current. A program that
// does not compile or link is reported once, when it is built; drawing then gives the
// fixed-function pipeline's white.
#pragma once

#include <cstdint>

#include "engine/pixels/render_texture.h"
#include "pixelbender/model.h"
#include "support/heap.h"

class NodeImpl : public aeBase {
public:
    NodeImpl(const pbKernelInfo& kernel, std::uint32_t swizzle);
    NodeImpl(const pbGraphInfo& graph, std::size_t nodeIndex, std::uint32_t swizzle);

    // Draws one quad over the whole frame. The target must have its storage and be bound.
    void draw(const FrameDescription& frame) const;

    void readPixels(const PixelRead& read) const;

    RenderTexture target;
    GlProgram program;
    bool isLinked = false; // otherwise the program cannot be used

private:
    void buildObjects(std::string_view name, const NarrowString& vertexText,
                      const NarrowString& fragmentText);

    bool mayLeavePixels_ = false; // false: the quad writes every pixel
};
