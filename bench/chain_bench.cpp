// Frames of graphs with more and more passes; the time should be proportional to the number of
// passes.

#include "bench/chain.h"
#include "bench/gl_main.h"

namespace {

constexpr int rounds = 30;

void chain(benchmark::State& state) {
    bench::runChainBenchmark(state,
                             {static_cast<std::size_t>(state.range(0)), 1920, 1080,
                              pbhost::depthOfBits(static_cast<int>(state.range(1))).value()});
}

BENCHMARK(chain)
    ->ArgNames({"passes", "bits"})
    ->ArgsProduct({{1, 4, 16}, {8, 32}})
    ->Iterations(rounds)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return bench::runWithOpenGl(argc, argv);
}
