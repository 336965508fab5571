// The parsers of kernels and graphs: throughput for realistic text, and the time for malformed text
// of one and two megabytes, whose ratio should be two.

#include <benchmark/benchmark.h>

#include "bench/kernel_texts.h"
#include "bench/paired_timing.h"
#include "command/command_scope.h"
#include "engine/pixels/channel_order.h"
#include "engine/program/glsl_generator.h"
#include "hostkit/host.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"

namespace {

constexpr std::size_t megabyte = 1'000'000;
constexpr int rounds = 10;

// Models need a running command for their memory.
class Command {
    hostkit::Host host_;
    CommandScope scope_{0, 0, host_.inData()};
};

void translateKernel(const std::string& text) {
    pbKernelInfo kernel;
    PBKParser(text, kernel).parseKernel();
    NarrowString vertexText;
    NarrowString fragmentText;
    generateKernelShaders(kernel, vertexText, fragmentText, hostSwizzle);
    benchmark::DoNotOptimize(fragmentText.data());
}

void readGraph(const std::string& text) {
    pbGraphInfo graph;
    benchmark::DoNotOptimize(readGraphText(text, graph));
}

void kernel(benchmark::State& state) {
    const Command command;
    const std::string text = bench::realisticKernel(static_cast<std::size_t>(state.range(0)));
    for ([[maybe_unused]] auto iteration : state)
        translateKernel(text);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.SetComplexityN(static_cast<std::int64_t>(text.size()));
}

// Times one and two megabytes in turn; the benchmark's own time is that of one.
void compareLengths(benchmark::State& state, const bench::MalformedText& malformed,
                    void (*read)(const std::string&)) {
    const Command command;
    const std::string once = malformed.make(megabyte);
    const std::string twice = malformed.make(2 * megabyte);
    bench::PairedTiming timing({[&] { read(once); }, [&] { read(twice); }});
    for ([[maybe_unused]] auto iteration : state)
        state.SetIterationTime(timing.round());
    state.SetLabel(malformed.name);
    state.counters["ms_1MB"] = timing.medianMilliseconds(0);
    state.counters["ms_2MB"] = timing.medianMilliseconds(1);
    state.counters["ratio"] = timing.medianRatio(1, 0);
}

void malformedKernel(benchmark::State& state) {
    compareLengths(state, bench::malformedKernels.at(static_cast<std::size_t>(state.range(0))),
                   translateKernel);
}

void malformedGraph(benchmark::State& state) {
    compareLengths(state, bench::malformedGraphs.at(static_cast<std::size_t>(state.range(0))),
                   readGraph);
}

BENCHMARK(kernel)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

BENCHMARK(malformedKernel)
    ->DenseRange(0, std::ssize(bench::malformedKernels) - 1)
    ->Iterations(rounds)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

BENCHMARK(malformedGraph)
    ->DenseRange(0, std::ssize(bench::malformedGraphs) - 1)
    ->Iterations(rounds)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
