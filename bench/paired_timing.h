// Compares the times of several actions in one process.
//
// In each round all actions run, in a different order each time, so that temporary slowdowns of the
// machine affect all of them. Reported times are medians over the rounds; ratios are the medians of
// the ratios within rounds.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace bench {

class PairedTiming {
public:
    explicit PairedTiming(std::vector<std::function<void()>> actions);

    // Runs each action once and returns the time of the first action in seconds.
    double round();

    double medianMilliseconds(std::size_t action) const;
    double medianRatio(std::size_t action, std::size_t reference) const;

private:
    std::vector<std::function<void()>> actions_;
    std::vector<std::size_t> order_;
    std::vector<std::vector<double>> seconds_; // by action, then by round
};

} // namespace bench
