// Values to compare with: the components that a test names, everything behind them zero.
#pragma once

#include <algorithm>
#include <initializer_list>

#include "pixelbender/model.h"

inline pbValue ints(std::initializer_list<std::int32_t> components) {
    pbValue value;
    std::copy(components.begin(), components.end(), value.ints.begin());
    return value;
}

inline pbValue floats(std::initializer_list<float> components) {
    pbValue value;
    std::copy(components.begin(), components.end(), value.floats.begin());
    return value;
}

inline pbValue bools(std::initializer_list<int> components) {
    pbValue value;
    std::copy(components.begin(), components.end(), value.bytes.begin());
    return value;
}

// All sixteen slots, bit for bit.
inline bool operator==(const pbValue& a, const pbValue& b) {
    return a.ints == b.ints;
}
