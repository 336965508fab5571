// Compiles and links the two shaders of a program, and reports failures on the report channels.
#pragma once

#include <string_view>

#include "gpu/gl_names.h"
#include "support/text.h"

// Returns the program even if it failed, without a shader that does not compile. `name` is used in
// the messages. A program that needs more varyings than OpenGL has is not passed to the driver's
// linker, and is reported as one that did not link. Needs a current context.
GlProgram buildProgram(std::string_view name, const NarrowString& vertexText,
                       const NarrowString& fragmentText);
