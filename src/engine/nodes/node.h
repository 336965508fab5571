// A node that runs one kernel: one pass over the whole frame.
#pragma once

#include <memory>

#include "engine/graph/graph_parameter.h"
#include "engine/nodes/node_base.h"
#include "engine/nodes/node_impl.h"

class Node : public NodeBase {
public:
    // Both compile the kernel immediately and store nothing of the model.
    Node(pbGraph& owner, const pbKernelInfo& kernel);
    Node(pbGraph& owner, const pbGraphInfo& graphInfo, std::size_t nodeIndex);

    bool isKernel() const override { return true; }
    void readBack(const FrameDescription& target) override;
    void render(const FrameDescription& frame) override;
    void reset() override;
    PixelSize pixelSize(const FrameDescription& frame) const override;
    GLuint texture() const override { return impl->target.texture.get(); }
    RenderTexture& target() override { return impl->target; }

    std::unique_ptr<NodeImpl> impl;

private:
    void takeKernel(const pbKernelInfo& kernel, const NarrowString& parametersCode);
    void chooseParameters();
    void useProgram(const FrameDescription& frame) const;
    void sendInputs(const FrameDescription& frame) const;
    void filterInputs(GLint filter) const;

    HostVector<const GraphParameter*>
        parameters_; // the uniforms of the program among them; not owned
    bool readsPixelCentres_ = false;
};

// The uniforms of every program that do not come from a parameter: sizes and downsampling.
void applyFrameUniforms(const FrameDescription& frame, GLuint program);
