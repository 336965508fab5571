// A frame of the engine, from upload to read-back, compared with the same OpenGL calls without the
// engine and with the fewest calls that give the same picture.

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
