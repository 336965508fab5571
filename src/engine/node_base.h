// A node of an executable graph: holds one frame's result in a texture and can read it back.
//
// Nodes belong to their graph and know it for its parameters and channel order. Every operation
// that touches OpenGL (all but isKernel, pixelSize and texture) needs the device's context current,
// and so does the destructor.
#pragma once

#include <GL/glew.h>

#include <array>
#include <cstdint>

#include "engine/frame_description.h"
#include "engine/render_texture.h"
#include "pixelbender/model.h"
#include "support/text.h"

class pbGraph;
class NodeBase;

// One input of a kernel.
struct Connection {
    NodeBase* source = nullptr;  // null: nothing feeds it; not owned
    std::array<char, 64> name{}; // of the input in the kernel, at most 63 bytes
    NarrowString wholeName;      // the same, as the shader has it
};

using PixelSize = std::array<float, 2>; // pixel aspect ratio and 1

class NodeBase : public aeBase {
public:
    NodeBase(pbGraph& owner, std::string_view nodeName);

    virtual bool isKernel() const = 0;

    // Writes the result to host memory; only the head of the description counts.
    virtual void readBack(const FrameDescription& target) = 0;

    // Makes this frame's result, after that of all inputs; once until `reset`.
    virtual void render(const FrameDescription& frame) = 0;

    // Ends the frame: the graph takes the texture back.
    virtual void reset() = 0;

    // Puts the result on a texture unit and tells the sampler of that name.
    virtual void bindInput(GLuint program, const char* inputName, GLuint unit) const;

    virtual PixelSize pixelSize(const FrameDescription& frame) const = 0;
    virtual GLuint texture() const = 0;
    virtual RenderTexture& target() = 0; // which holds the texture

    // A node has drawn what one of its inputs needs of this node. After the last of them the
    // texture may serve another node of the same frame.
    void endRead();

    pbName name{}; // the input's or kernel's name, or a graph node's id
    pbGraph* graph;
    HostVector<Connection> connections; // in the order of the kernel's inputs
    bool done = false;                  // the texture holds this frame's result
    std::uint32_t readerCount = 0;      // inputs fed by this node, of nodes that the output needs
    std::uint32_t readsDone = 0;        // of these, in this frame
};

// bindInput for any texture.
void bindTexture(GLuint textureName, GLuint program, const char* inputName, GLuint unit);
