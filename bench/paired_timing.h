// Times several actions against one another in one process.
//
// They run in turn, and each round takes them in another order, so that whatever slows the machine
// down for a while meets all of them. Times are medians, and a ratio is the median of the ratios
// within the rounds.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace bench {

class PairedTiming {
public:
    explicit PairedTiming(std::vector<std::function<void()>> actions);

    // Runs each action once; gives the time of the first one, in seconds.
    double round();

    double medianMilliseconds(std::size_t action) const;
    double medianRatio(std::size_t action, std::size_t reference) const;

private:
    std::vector<std::function<void()>> actions_;
    std::vector<std::size_t> order_;
    std::vector<std::vector<double>> seconds_; // by action, then by round
};

} // namespace bench
