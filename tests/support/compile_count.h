// Counts the shaders that the module compiles while it stands. Global setup fills the module's
// table of OpenGL's functions, so it must be over.
#pragma once

#define GLEW_NO_GLU
#include <GL/glew.h>

class CompileCount {
public:
    CompileCount();
    ~CompileCount();
    CompileCount(const CompileCount&) = delete;
    CompileCount& operator=(const CompileCount&) = delete;

    // Since the last call, or the start.
    int take();

private:
    PFNGLCOMPILESHADERPROC* place_; // in the module's table of OpenGL's functions
    PFNGLCOMPILESHADERPROC real_;
};
