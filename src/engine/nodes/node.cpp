#include "engine/nodes/node.h"

#include <algorithm>

#include "engine/graph/pb_graph.h"
#include "engine/pixels/pixel_format.h"
#include "engine/program/glsl_generator.h"
#include "engine/program/point_sampling.h"
#include "gpu/errors.h"

Node::Node(pbGraph& owner, const pbKernelInfo& kernel)
    : NodeBase(owner, nameText(kernel.name)), impl(makeObject<NodeImpl>(kernel, owner.swizzle)) {
    takeKernel(kernel, "");
}

Node::Node(pbGraph& owner, const pbGraphInfo& graphInfo, std::size_t nodeIndex)
    : NodeBase(owner, nameText(graphInfo.nodes[nodeIndex].id)),
      impl(makeObject<NodeImpl>(graphInfo, nodeIndex, owner.swizzle)) {
    const pbKernelInfo* kernel = kernelOfNode(graphInfo, graphInfo.nodes[nodeIndex]);
    if (kernel != nullptr)
        takeKernel(*kernel, graphInfo.nodes[nodeIndex].evaluateParametersCode);
}

void Node::takeKernel(const pbKernelInfo& kernel, const NarrowString& parametersCode) {
    readsPixelCentres_ =
        readsOnlyPixelCentres(kernel.shaderText) && readsOnlyPixelCentres(parametersCode);
    for (const pbVariable& input : kernel.inputs) {
        Connection& connection = connections.emplace_back();
        const std::size_t length = std::min(input.wholeName.size(), connection.name.size() - 1);
        std::copy_n(input.wholeName.begin(), length, connection.name.begin());
        connection.wholeName = input.wholeName;
    }
    chooseParameters();
}

// A control may have another type than the program's uniform (a popup for a float). OpenGL reports
// an error for such a value in each frame, so these parameters are left out.
void Node::chooseParameters() {
    if (!impl->isLinked)
        return;
    parameters_.reserve(graph->parameters.size());
    glUseProgram(impl->program.get());
    takeError();
    for (const auto& parameter : graph->parameters) {
        parameter->apply(impl->program.get());
        if (takeError() == GL_NO_ERROR)
            parameters_.push_back(parameter.get());
    }
    glUseProgram(0);
}

void Node::render(const FrameDescription& frame) {
    if (done)
        return;
    for (const Connection& connection : connections)
        if (connection.source != nullptr)
            connection.source->render(frame);
    graph->provideStorage(impl->target, frame, frame.componentBytes,
                          channelFormat(frame.channels).drawStorage);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, impl->target.framebuffer.get());
    glDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
    if (impl->isLinked)
        useProgram(frame);
    else
        glUseProgram(0); // the fixed-function pipeline draws
    const bool isNearest =
        readsPixelCentres_ && frame.downsampleX == 1.0F && frame.downsampleY == 1.0F;
    if (isNearest)
        filterInputs(GL_NEAREST);
    impl->draw(frame);
    if (isNearest)
        filterInputs(GL_LINEAR); // the default of every texture
    for (const Connection& connection : connections)
        if (connection.source != nullptr)
            connection.source->endRead();
    glUseProgram(0);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    done = true;
}

void Node::useProgram(const FrameDescription& frame) const {
    const GLuint program = impl->program.get();
    glUseProgram(program);
    applyFrameUniforms(frame, program);
    for (const GraphParameter* parameter : parameters_)
        parameter->apply(program);
    sendInputs(frame);
    TVM_CHECK_GL("a program's uniforms");
}

void Node::sendInputs(const FrameDescription& frame) const {
    if (connections.empty())
        return;
    std::array<PixelSize, maxKernelInputs> sizes{};
    const GLuint program = impl->program.get();
    for (std::size_t i = 0; i < connections.size(); ++i) {
        const Connection& connection = connections[i];
        const auto unit = static_cast<GLuint>(i + 1); // unit 0 is the target's own
        if (connection.source != nullptr) {
            connection.source->bindInput(program, connection.wholeName.c_str(), unit);
            sizes[i] = connection.source->pixelSize(frame);
        } else {
            bindTexture(graph->transparentTexture.get(), program, connection.wholeName.c_str(),
                        unit);
            sizes[i] = {1.0F, 1.0F};
        }
    }
    glUniform2fv(glGetUniformLocation(program, "tvek_texturePixelSize"),
                 static_cast<GLsizei>(connections.size()), sizes.front().data());
}

void Node::filterInputs(GLint filter) const {
    for (const Connection& connection : connections) {
        if (connection.source == nullptr)
            continue;
        glBindTexture(GL_TEXTURE_2D, connection.source->texture());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    }
}

void Node::readBack(const FrameDescription& target) {
    if (!done)
        return;
    const DepthFormat& depth = depthFormat(target.componentBytes);
    const ChannelFormat& format = channelFormat(target.channels);
    impl->readPixels({target.originX, target.originY, target.width, target.height, target.rowPixels,
                      format.nodeReadBack, depth.type, target.pixels,
                      depth.componentBytes == 2 ? format.components : 0});
}

void Node::reset() {
    graph->releaseStorage(impl->target);
    done = false;
    readsDone = 0;
}

PixelSize Node::pixelSize(const FrameDescription& frame) const {
    return {frame.pixelAspect, 1.0F};
}

void applyFrameUniforms(const FrameDescription& frame, GLuint program) {
    const auto send = [program](const char* name, float x, float y) {
        glUniform2f(glGetUniformLocation(program, name), x, y);
    };
    send("tvek_outputPixelSize", frame.pixelAspect, 1.0F);
    send("tvek_compSize", static_cast<float>(frame.width), static_cast<float>(frame.height));
    send("tvek_downsamplingRate", frame.downsampleX, frame.downsampleY);
}
