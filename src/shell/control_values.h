// Conversions between a kernel's values and those of the host's controls.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "pixelbender/model.h"
#include "sdk/pf_types.h"

// Fixed point, rounded half away from zero. Numbers out of the range of 16.16 are clamped; NaN
// gives 0.
inline PF_Fixed toFixed(double number) {
    const double scaled = number * 65536.0 + (number < 0 ? -0.5 : 0.5);
    constexpr double smallest = std::numeric_limits<PF_Fixed>::min();
    constexpr double largest = std::numeric_limits<PF_Fixed>::max();
    if (std::isnan(scaled))
        return 0;
    return static_cast<PF_Fixed>(std::fmin(std::fmax(scaled, smallest), largest));
}

// The number for a control's value in fixed point.
inline float fromFixed(PF_Fixed fixed) {
    return static_cast<float>(fixed * 1.52587890625e-05);
}

// Component k of a value as a number, by the scalar kind of the type; of a bool 0 or 1.
inline double componentNumber(pbElementType type, const pbValue& value, std::size_t k) {
    switch (componentBase(type)) {
    case pbScalarInt:
        return value.ints[k];
    case pbScalarFloat:
        return value.floats[k];
    case pbScalarBool:
        return value.bytes[k] != 0 ? 1 : 0;
    default:
        return 0;
    }
}
