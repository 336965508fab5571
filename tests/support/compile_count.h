// Counts the shaders that are compiled while it stands: the module and the test share one table of
// OpenGL's functions. Global setup fills that table, so it must be over.
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
    PFNGLCOMPILESHADERPROC real_;
};
