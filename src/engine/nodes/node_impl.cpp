#include "engine/nodes/node_impl.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include "engine/pixels/pixel_format.h"
#include "engine/program/glsl_generator.h"
#include "engine/program/program_builder.h"
#include "gpu/errors.h"

namespace {

// GLSL's `discard` keeps the old pixel, which must be transparent black then. The word may be
// anywhere in the text; the preprocessor could also join it from two parts, with ## or a continued
// line.
bool mayDiscard(const NarrowString& fragmentText) {
    const auto has = [&](const char* part) {
        return fragmentText.find(part) != NarrowString::npos;
    };
    return has("discard") || has("##") || has("\\");
}

} // namespace

NodeImpl::NodeImpl(const pbKernelInfo& kernel, std::uint32_t swizzle) {
    NarrowString vertexText;
    NarrowString fragmentText;
    generateKernelShaders(kernel, vertexText, fragmentText, swizzle);
    buildObjects(nameText(kernel.name), vertexText, fragmentText);
}

NodeImpl::NodeImpl(const pbGraphInfo& graph, std::size_t nodeIndex, std::uint32_t swizzle) {
    NarrowString vertexText;
    NarrowString fragmentText;
    generateNodeShaders(graph, nodeIndex, vertexText, fragmentText, swizzle);
    buildObjects(nameText(graph.nodes[nodeIndex].id), vertexText, fragmentText);
}

void NodeImpl::buildObjects(std::string_view name, const NarrowString& vertexText,
                            const NarrowString& fragmentText) {
    target = RenderTexture::create();
    program = buildProgram(name, vertexText, fragmentText);
    GLint linkStatus = GL_FALSE;
    glGetProgramiv(program.get(), GL_LINK_STATUS, &linkStatus);
    isLinked = linkStatus == GL_TRUE;
    mayLeavePixels_ = mayDiscard(fragmentText);
}

void NodeImpl::draw(const FrameDescription& frame) const {
    const auto width = static_cast<GLsizei>(frame.width);
    const auto height = static_cast<GLsizei>(frame.height);
    glBindTexture(GL_TEXTURE_2D, target.texture.get());
    if (mayLeavePixels_) {
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_LIGHTING);
    glViewport(0, 0, width, height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluOrtho2D(0, width, 0, height);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glColor4d(1, 1, 1, 1);
    glBegin(GL_POLYGON);
    glVertex2d(0, 0);
    glVertex2d(0, height);
    glVertex2d(width, height);
    glVertex2d(width, 0);
    glEnd();
    glFlush();
    TVM_CHECK_GL("the draw");
}

void NodeImpl::readPixels(const PixelRead& read) const {
    readFramebuffer(target, read);
}
