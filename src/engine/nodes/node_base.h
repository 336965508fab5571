// A node of an executable graph: holds one frame's result in a texture and can read it back.
//
// Nodes belong to their graph and use its parameters and channel order. All operations but
// isKernel, pixelSize and texture need the device's context current, and so does the destructor.
#pragma once

#include <GL/glew.h>

#include <array>
#include <cstdint>

#include "engine/pixels/frame_description.h"
#include "engine/pixels/render_texture.h"
#include "pixelbender/model.h"
#include "support/text.h"

class pbGraph;
class NodeBase;

// One input of a kernel.
struct Connection {
    NodeBase* source = nullptr;  // null: not connected; not owned
    std::array<char, 64> name{}; // of the input in the kernel, at most 63 bytes
    NarrowString wholeName;      // the same, not shortened
};

using PixelSize = std::array<float, 2>; // pixel aspect ratio and 1

class NodeBase : public aeBase {
public:
    NodeBase(pbGraph& owner, std::string_view nodeName);

    virtual bool isKernel() const = 0;

    // Writes the result to host memory; uses only the inherited fields of the description.
    virtual void readBack(const FrameDescription& target) = 0;

    // Renders all inputs, then this node; does nothing if that was done since the last `reset`.
    virtual void render(const FrameDescription& frame) = 0;

    // Ends the frame: the graph reclaims the texture.
    virtual void reset() = 0;

    // Binds the result to a texture unit and sets the sampler of that name to it.
    virtual void bindInput(GLuint program, const char* inputName, GLuint unit) const;

    virtual PixelSize pixelSize(const FrameDescription& frame) const = 0;
    virtual GLuint texture() const = 0;
    virtual RenderTexture& target() = 0; // which holds the texture

    // Called when a node that reads this one has been drawn. After the last such call the texture
    // may be reused for another node of the same frame.
    void endRead();

    pbName name{}; // the input's or kernel's name, or a graph node's id
    pbGraph* graph;
    HostVector<Connection> connections; // in the order of the kernel's inputs
    bool done = false;                  // the texture holds this frame's result
    std::uint32_t readerCount = 0;      // connected inputs of nodes that the output depends on
    std::uint32_t readsDone = 0;        // of these, in this frame
};

// bindInput for any texture.
void bindTexture(GLuint textureName, GLuint program, const char* inputName, GLuint unit);
