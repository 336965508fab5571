#include "bench/gl_main.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string_view>

#include "bench/engine_session.h"
#include "pbhost/process/large_blocks.h"

namespace bench {

namespace {

bool takeFlag(int& argc, char** argv, std::string_view flag) {
    char** const end = argv + argc;
    char** const rest = std::remove(argv + 1, end, flag);
    argc = static_cast<int>(rest - argv);
    return rest != end;
}

void nameDriver(const char* key, GLenum name) {
    benchmark::AddCustomContext(key, reinterpret_cast<const char*>(glGetString(name)));
}

} // namespace

int runWithOpenGl(int argc, char** argv) {
    const bool keepsLargeBlocks = takeFlag(argc, argv, "--keep-large-blocks");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    if (keepsLargeBlocks)
        pbhost::keepLargeBlocks();
    try {
        const EngineSession session;
        nameDriver("GL_RENDERER", GL_RENDERER);
        nameDriver("GL_VERSION", GL_VERSION);
        benchmark::AddCustomContext("large blocks", keepsLargeBlocks ? "kept" : "returned");
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::runtime_error& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    benchmark::Shutdown();
    return 0;
}

} // namespace bench
