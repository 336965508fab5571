// Conversions between a kernel's values and those of the host's controls.
#pragma once

#include <cstddef>

#include "pixelbender/model.h"
#include "sdk/pf_fixed.h"

// The number of a fixed-point value.
inline float fromFixed(PF_Fixed fixed) {
    return static_cast<float>(fixed / fixedOne);
}

// Component k of a value as a number, by the scalar kind of the type; 0 or 1 for a bool.
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
