// One parameter of an executable graph: its description in the file, and its value for this frame.
//
// How a parameter's value is sent to OpenGL is chosen here, from three tables in
// graph_parameter.cpp; which control shows it, in shell/controls/control_forms. A new kind of
// parameter needs a row in both.
#pragma once

#include <GL/glew.h>

#include <cstdint>

#include "pixelbender/model.h"

struct GraphParameter : aeBase {
    explicit GraphParameter(const pbParameter& source);

    // Sets the uniform with the parameter's full name; does nothing if the program has none. The
    // program must be in use, in the device's context.
    void apply(GLuint program) const;

    std::int32_t slot = -1; // the first effect control of the parameter; -1: none
    pbParameter parameter;
    pbValue value; // initially the default, or zeros if the file has none

private:
    using Upload = void (*)(GLint location, const pbValue& value);
    Upload upload_; // chosen by the parameter's hint, parameter type and element type
};
