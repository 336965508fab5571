// Numbers in 16.16, as the host and its effects convert them.
#pragma once

#include <cmath>
#include <limits>

#include "sdk/pf_types.h"

inline constexpr double fixedOne = 65536;

// Rounded half away from zero. What 16.16 cannot hold becomes the nearest that it can; what is no
// number becomes 0.
inline PF_Fixed toFixed(double number) {
    const double scaled = number * fixedOne + (number < 0 ? -0.5 : 0.5);
    constexpr double smallest = std::numeric_limits<PF_Fixed>::min();
    constexpr double largest = std::numeric_limits<PF_Fixed>::max();
    if (std::isnan(scaled))
        return 0;
    return static_cast<PF_Fixed>(std::fmin(std::fmax(scaled, smallest), largest));
}
