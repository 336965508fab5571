// The executable form of a loaded file: nodes wired to one another, an output, and the parameters
// that reach every program.
//
// Building one compiles its programs and creates its textures; running it creates nothing. Nothing
// of the model is kept. Construction, destruction, render and resetNodes need the device's context
// current, everything needs a running command. A graph is good for the caller only when isRunnable.
#pragma once

#include <cstdint>
#include <memory>

#include "engine/graph_parameter.h"
#include "engine/node.h"
#include "gpu/gl_names.h"
#include "pixelbender/model.h"
#include "support/text.h"

class ImageNode;

class pbGraph : public aeBase {
public:
    // swizzle is the channel order index of the host's pixels, for every program. Both throw the
    // `long` 4 when there is no memory.
    pbGraph(const pbKernelInfo& kernelInfo, std::uint32_t swizzle);
    pbGraph(const pbGraphInfo& graphInfo, std::uint32_t swizzle);
    ~pbGraph() override;

    // The graph must be runnable.
    void render(const FrameDescription& frame);

    // Ends the frame for every node, and sets frameError. An error is told to the developer and to
    // the user, and goes to the error log unless the frame before had the same: what was read back
    // is then not the graph's result.
    void resetNodes();

    // The image nodes, counted in the order of `nodes`; null for an index that has none.
    std::int32_t imageNodeCount() const;
    ImageNode* imageNodeAt(std::int32_t index) const;

    // The node that holds the result; null when the graph has none.
    NodeBase* output() const;

    // Gives a node's target storage of the frame's size: its own where that was kept, that of a
    // texture that no node reads any more, else fresh storage. The pixels are undefined.
    void provideStorage(RenderTexture& target, const FrameDescription& frame,
                        std::uint32_t componentBytes, unsigned int format);

    // Ends a target's use in the frame: it shrinks to one pixel, or is kept for the next frame.
    void releaseStorage(RenderTexture& target);

    // Tells nodes and parameters to the developer's channel.
    void reportGraph() const;

    NarrowString name;
    NarrowString infoText; // what the user reads about the file
    bool failed = false;   // a cycle, or a kernel with too many inputs
    std::int32_t outputNode = -1;
    HostVector<std::unique_ptr<NodeBase>> nodes;
    std::uint32_t swizzle;
    HostVector<std::unique_ptr<GraphParameter>> parameters;
    unsigned int frameError = 0; // the first that OpenGL had in the last frame; 0: none
    HostVector<RenderTexture*> spareTextures; // hold storage; with room for those of all nodes
    bool keepsTextures = false;   // between frames, with their storage; costs their memory
    GlTexture transparentTexture; // for inputs that nothing feeds; exists where there are such

private:
    void tell(const char* reason) const;
    void tellError(unsigned int error);
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

// Tells one parameter to the developer's channel.
void reportParameter(const GraphParameter& graphParameter);
