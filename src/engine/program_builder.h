// Compiles and links the two texts of a program, and reports failures on the report channels.
#pragma once

#include <string_view>

#include "gpu/gl_names.h"
#include "support/text.h"

// Gives the program even when it failed; a stage that does not compile is left out of it. `name` is
// used in the messages. A program that needs more varyings than OpenGL has is not passed to the
// driver's linker, and reported as one that did not link. Needs a current context.
GlProgram buildProgram(std::string_view name, const NarrowString& vertexText,
                       const NarrowString& fragmentText);
