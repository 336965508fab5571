#include "bench/paired_timing.h"

#include <algorithm>
#include <chrono>
#include <numeric>

namespace bench {

namespace {

double secondsOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

PairedTiming::PairedTiming(std::vector<std::function<void()>> actions)
    : actions_(std::move(actions)), order_(actions_.size()), seconds_(actions_.size()) {
    std::iota(order_.begin(), order_.end(), std::size_t{0});
}

double PairedTiming::round() {
    for (const std::size_t action : order_)
        seconds_[action].push_back(secondsOf(actions_[action]));
    std::next_permutation(order_.begin(), order_.end());
    return seconds_.front().back();
}

double PairedTiming::medianMilliseconds(std::size_t action) const {
    return median(seconds_[action]) * 1000;
}

double PairedTiming::medianRatio(std::size_t action, std::size_t reference) const {
    std::vector<double> ratios(seconds_[action].size());
    std::transform(seconds_[action].begin(), seconds_[action].end(), seconds_[reference].begin(),
                   ratios.begin(), std::divides<>());
    return median(std::move(ratios));
}

} // namespace bench
