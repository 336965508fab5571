// One parameter of an executable graph: what the file said of it, and its value for this frame.
#pragma once

#include <GL/glew.h>

#include <cstdint>

#include "pixelbender/model.h"

struct GraphParameter : aeBase {
    explicit GraphParameter(const pbParameter& source);

    // Sends the value to the uniform of the parameter's whole name; a program without it ignores
    // it. The program must be in use, in the device's context.
    void apply(GLuint program) const;

    std::int32_t slot = -1; // the first effect control of the parameter; -1: none
    pbParameter parameter;
    pbValue value; // the default, set or not, until somebody writes it

private:
    using Upload = void (*)(GLint location, const pbValue& value);
    Upload upload_; // chosen by the parameter's hint, parameter type and element type
};
