#include "tests/support/compile_count.h"

#include <cstddef>
#include <utility>

#include <gtest/gtest.h>

#include "gpu/device.h"
#include "hostkit/library.h"

namespace {

PFNGLCOMPILESHADERPROC driversOwn = nullptr;
int compiled = 0;

void GLAPIENTRY countAndCompile(GLuint shader) {
    ++compiled;
    driversOwn(shader);
}

#ifdef _WIN32

PFNGLCOMPILESHADERPROC driversFunction() {
    const OwnDevice device("CompileCount");
    const ContextSwitch inDevice(device);
    return reinterpret_cast<PFNGLCOMPILESHADERPROC>(
        reinterpret_cast<void*>(wglGetProcAddress("glCompileShader")));
}

// The module has a table of its own there, which nobody exports: the one word among its variables
// that holds the driver's function.
PFNGLCOMPILESHADERPROC* modulesCompileShader() {
    const PFNGLCOMPILESHADERPROC wanted = driversFunction();
    auto* image = static_cast<std::byte*>(hostkit::library::loaded(TVM_MODULE_PATH));
    auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(
        image + reinterpret_cast<IMAGE_DOS_HEADER*>(image)->e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    PFNGLCOMPILESHADERPROC* found = nullptr;
    for (int i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        if ((section->Characteristics & IMAGE_SCN_MEM_WRITE) == 0)
            continue;
        auto* words = reinterpret_cast<PFNGLCOMPILESHADERPROC*>(image + section->VirtualAddress);
        for (std::size_t word = 0; word < section->Misc.VirtualSize / sizeof(*words); ++word)
            if (words[word] == wanted) {
                EXPECT_EQ(found, nullptr) << "which of them is the module's?";
                found = &words[word];
            }
    }
    EXPECT_NE(found, nullptr);
    return found;
}

#else

// The module and the test share one table of OpenGL's functions.
PFNGLCOMPILESHADERPROC* modulesCompileShader() {
    return &__glewCompileShader;
}

#endif

} // namespace

CompileCount::CompileCount() : place_(modulesCompileShader()), real_(*place_) {
    driversOwn = real_;
    compiled = 0;
    *place_ = countAndCompile;
}

CompileCount::~CompileCount() {
    *place_ = real_;
}

int CompileCount::take() {
    return std::exchange(compiled, 0);
}
