// The engine's frame, upload to read back, against the same OpenGL calls without the engine and
// against the fewest calls that make the picture.

#include "bench/chain.h"
#include "bench/gl_main.h"

namespace {

void frame(benchmark::State& state) {
    bench::runChainBenchmark(state, bench::frameSize(state));
}

BENCHMARK(frame)->Apply(bench::applyFrameSizes);

} // namespace

int main(int argc, char** argv) {
    return bench::runWithOpenGl(argc, argv);
}
