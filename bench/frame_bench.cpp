// The engine's frame, upload to read back, against the same OpenGL calls without the engine and
// against the fewest calls that make the picture.

#include "bench/chain.h"
#include "bench/gl_main.h"

namespace {

constexpr int rounds = 30;

void frame(benchmark::State& state) {
    bench::runChainBenchmark(state, {1, static_cast<unsigned>(state.range(0)),
                                     static_cast<unsigned>(state.range(1)),
                                     bench::depthOfBits(state.range(2))});
}

BENCHMARK(frame)
    ->ArgNames({"width", "height", "bits"})
    ->Args({1920, 1080, 8})
    ->Args({1920, 1080, 16})
    ->Args({1920, 1080, 32})
    ->Args({3840, 2160, 8})
    ->Args({3840, 2160, 16})
    ->Args({3840, 2160, 32})
    ->Iterations(rounds)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return bench::runWithOpenGl(argc, argv);
}
