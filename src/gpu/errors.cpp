#include "gpu/errors.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <utility>

#include "support/report.h"
#include "support/text.h"

namespace {

GLenum firstError = GL_NO_ERROR; // that checkStep took off OpenGL's list

// A list has as many entries as the driver has parts; a context that is lost may never be done.
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
