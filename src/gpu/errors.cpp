#include "gpu/errors.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <utility>

#include "support/report.h"
#include "support/text.h"

namespace {

GLenum firstError = GL_NO_ERROR; // that checkStep removed from OpenGL's list

// A driver's list has few entries, but a lost context may report errors endlessly.
constexpr int longestList = 16;

GLenum takeList() {
    const GLenum first = glGetError();
    for (int i = 0; i < longestList && first != GL_NO_ERROR; ++i)
        if (glGetError() == GL_NO_ERROR)
            break;
    return first;
}

} // namespace

unsigned int takeError() {
    const GLenum left = takeList();
    const GLenum kept = std::exchange(firstError, static_cast<GLenum>(GL_NO_ERROR));
    return kept != GL_NO_ERROR ? kept : left;
}

const char* errorText(unsigned int error) {
    const GLubyte* text = gluErrorString(error);
    return text == nullptr ? "unknown error" : reinterpret_cast<const char*>(text);
}

#ifndef NDEBUG
void checkStep(const char* step) {
    const GLenum error = takeList();
    if (error == GL_NO_ERROR)
        return;
    if (firstError == GL_NO_ERROR)
        firstError = error;
    NarrowString message("OpenGL error after ");
    message.append(step).append(": ").append(errorText(error)).append("\n");
    reportMessage(message.c_str(), ChannelTrace);
}
#endif
