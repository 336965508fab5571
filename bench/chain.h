// A chain of passes as the engine runs it, and its benchmark against the two peers.
//
// Each pass runs the same small kernel on the result of the one before. Needs a running command and
// the device's context current.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/frame_peers.h"
#include "bench/paired_timing.h"
#include "pbhost/pictures/picture.h"

namespace bench {

struct ChainSize {
    std::size_t passes;
    unsigned width; // pixels
    unsigned height;
    pbhost::Depth depth;
};

inline constexpr float gain = 0.96875F; // also in the graph's text

// The graph's file, and the texts that its nodes are made into.
std::string chainText(std::size_t passes);
std::vector<PassTexts> passTexts(std::size_t passes);

// Fixed noise over the whole range of the depth.
pbhost::Picture makeNoise(const ChainSize& size);

// The whole of a benchmark with manual time, which is the engine's. Fails when the three pictures
// differ in a byte.
void runChainBenchmark(benchmark::State& state, const ChainSize& size);

// The arguments width, height and bits of the benchmarks of single frames, with their rounds.
void applyFrameSizes(benchmark::internal::Benchmark* frame);
ChainSize frameSize(const benchmark::State& state);

// Runs the rounds of the state. The counters are the medians of the action that is measured, under
// its name, and of those behind it (same, best, and the first one with kept textures), and how many
// times as long as a peer it takes.
void runRounds(benchmark::State& state, PairedTiming& timing, const std::string& measured);

} // namespace bench
