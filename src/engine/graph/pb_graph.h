// The executable form of a loaded file: connected nodes, an output, and the parameters that every
// program gets.
//
// The constructor compiles the programs and creates the textures; rendering creates nothing.
// Nothing of the model is kept. Construction, destruction, render and resetNodes need the device's
// context current, everything needs a running command. Only a graph that isRunnable may be
// rendered.
#pragma once

#include <cstdint>
#include <memory>

#include "engine/graph/graph_parameter.h"
#include "engine/nodes/node.h"
#include "gpu/gl_names.h"
#include "pixelbender/model.h"
#include "support/text.h"

class ImageNode;

class pbGraph : public aeBase {
public:
    // swizzleIndex is the channel order of the host's pixels: an index into channelOrders, for
    // every program. Both throw the `long` 4 when there is no memory.
    pbGraph(const pbKernelInfo& kernelInfo, std::uint32_t swizzleIndex);
    pbGraph(const pbGraphInfo& graphInfo, std::uint32_t swizzleIndex);
    ~pbGraph() override;

    // The graph must be runnable.
    void render(const FrameDescription& frame);

    // Ends the frame for every node, and sets frameError. An error means that the pixels that were
    // read back are not the graph's result; it is reported to the developer and to the user, and
    // logged unless the previous frame had the same error.
    void resetNodes();

    // The image nodes, counted in the order of `nodes`; null for an index that has none.
    std::int32_t imageNodeCount() const;
    ImageNode* imageNodeAt(std::int32_t index) const;

    // The node that holds the result; null when the graph has none.
    NodeBase* output() const;

    // Gives a node's target storage of the frame's size: its own where that was kept, that of a
    // texture that no node reads any more, else new storage. The pixels are undefined.
    void provideStorage(RenderTexture& target, const FrameDescription& frame,
                        std::uint32_t componentBytes, unsigned int format);

    // Ends a target's use in the frame: it shrinks to one pixel, or is kept for the next frame.
    void releaseStorage(RenderTexture& target);

    // Reports nodes and parameters on the developer's channel.
    void reportGraph() const;

    NarrowString name;
    NarrowString infoText; // information about the file for the user
    bool failed = false;   // a cycle, or a kernel with too many inputs
    std::int32_t outputNode = -1;
    HostVector<std::unique_ptr<NodeBase>> nodes;
    std::uint32_t swizzle; // index into channelOrders
    HostVector<std::unique_ptr<GraphParameter>> parameters;
    unsigned int frameError = 0;              // first OpenGL error of the last frame; 0: none
    HostVector<RenderTexture*> spareTextures; // with storage; the capacity is the number of nodes
    bool keepsTextures = false;               // whether storage is kept between frames
    GlTexture transparentTexture; // for inputs that are not connected; 0 if there are none

private:
    void report(const char* reason) const;
    void reportFrameError(unsigned int error);
    void refuse(const char* reason);
    void buildKernel(const pbKernelInfo& kernelInfo);
    void buildGraph(const pbGraphInfo& graphInfo);
    void addGraphParameter(const pbParameter& source);
    void connect(const pbConnection& connection);
    std::int32_t indexOf(std::string_view nodeName) const;
    void closeOpenInputs();
    void prepareReuse();
    void buildInfoText(const pbMetadata& metadata, const char* heading);
};

// Whether the graph has an output that can be rendered.
bool isRunnable(const pbGraph& graph);

// Reports one parameter on the developer's channel.
void reportParameter(const GraphParameter& graphParameter);
