#include "engine/nodes/node_base.h"

#include "engine/graph/pb_graph.h"

NodeBase::NodeBase(pbGraph& owner, std::string_view nodeName) : graph(&owner) {
    copyName(name, nodeName);
}

void NodeBase::bindInput(GLuint program, const char* inputName, GLuint unit) const {
    bindTexture(texture(), program, inputName, unit);
}

void NodeBase::endRead() {
    if (++readsDone == readerCount)
        graph->spareTextures.push_back(&target());
}

void bindTexture(GLuint textureName, GLuint program, const char* inputName, GLuint unit) {
    // GL_TEXTURE_2D stays disabled: shaders do not need it, and the fixed-function pipeline, which
    // draws for a program that failed, must give plain white.
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, textureName);
    glUniform1i(glGetUniformLocation(program, inputName), static_cast<GLint>(unit));
    glActiveTexture(GL_TEXTURE0);
}
