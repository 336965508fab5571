#include "tests/support/compile_count.h"

#include <utility>

namespace {

PFNGLCOMPILESHADERPROC driversOwn = nullptr;
int compiled = 0;

void GLAPIENTRY countAndCompile(GLuint shader) {
    ++compiled;
    driversOwn(shader);
}

} // namespace

CompileCount::CompileCount() : real_(__glewCompileShader) {
    driversOwn = real_;
    compiled = 0;
    __glewCompileShader = countAndCompile;
}

CompileCount::~CompileCount() {
    __glewCompileShader = real_;
}

int CompileCount::take() {
    return std::exchange(compiled, 0);
}
