// Operations on the host's rectangles, shared by the host and its effects.
#pragma once

#include <algorithm>

#include "sdk/pf_types.h"

inline bool isEmpty(const PF_LRect& rect) {
    return rect.left >= rect.right || rect.top >= rect.bottom;
}

// The common part of two rectangles; an empty rectangle anywhere if there is none.
inline PF_LRect intersection(const PF_LRect& a, const PF_LRect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}
