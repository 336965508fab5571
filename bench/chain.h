// A graph that is a chain of passes, and its benchmark against the two reference programs.
//
// Each pass runs the same small kernel on the result of the one before. Needs a running command and
// the device's context current.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/paired_timing.h"
#include "bench/reference_programs.h"
#include "pbhost/pictures/picture.h"

namespace bench {

struct ChainSize {
    std::size_t passes;
    unsigned width; // pixels
    unsigned height;
    pbhost::Depth depth;
};

inline constexpr float gain = 0.96875F; // also in the graph's text

// The graph file's text, and the generated shaders of its nodes.
std::string chainText(std::size_t passes);
std::vector<PassTexts> passTexts(std::size_t passes);

// A picture of pseudo-random values over the whole range of the depth, always the same.
pbhost::Picture makeNoise(const ChainSize& size);

// Runs a benchmark whose manual time is the engine's. Fails if the programs' pictures differ.
void runChainBenchmark(benchmark::State& state, const ChainSize& size);

// Sets the arguments width, height and bits of the frame benchmarks, and the number of rounds.
void applyFrameSizes(benchmark::internal::Benchmark* frame);
ChainSize frameSize(const benchmark::State& state);

// Runs the rounds and sets the counters: the median time of the measured action under its name, the
// times of the other actions (same, best, and kept: the measured one with kept textures), and the
// ratios of the times.
void runRounds(benchmark::State& state, PairedTiming& timing, const std::string& measured);

} // namespace bench
