// Conversion to 16.16 fixed point, shared by the host and its effects.
#pragma once

#include <cmath>
#include <limits>

#include "sdk/pf_types.h"

inline constexpr PF_Fixed fixedUnits = 1 << 16; // units of the number 1
inline constexpr double fixedOne = fixedUnits;  // the same, for floating-point arithmetic

// Rounds half away from zero and clamps to the range of 16.16. NaN becomes 0.
inline PF_Fixed toFixed(double number) {
    const double scaled = number * fixedOne + (number < 0 ? -0.5 : 0.5);
    constexpr double smallest = std::numeric_limits<PF_Fixed>::min();
    constexpr double largest = std::numeric_limits<PF_Fixed>::max();
    if (std::isnan(scaled))
        return 0;
    return static_cast<PF_Fixed>(std::fmin(std::fmax(scaled, smallest), largest));
}
