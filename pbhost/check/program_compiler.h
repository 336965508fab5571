// Compiles and links programs on the driver, for its messages only.
//
// The engine keeps the first 1023 bytes of a log, which is enough for a host; here nothing is cut.
#pragma once

#include <vector>

#include "gpu/device.h"
#include "pbhost/diagnostics/compile_messages.h"
#include "pbhost/diagnostics/mapped_file.h"

namespace pbhost {

class ProgramCompiler {
public:
    // Throws Failure (RenderFailed) if OpenGL is not available.
    ProgramCompiler();

    // The logs of the steps that fail or have something to say. A program that needs more varyings
    // than OpenGL has fails without being linked, as in the engine.
    std::vector<CompileFailure> compile(const MappedProgram& program) const;

private:
    OwnDevice device_;
};

} // namespace pbhost
