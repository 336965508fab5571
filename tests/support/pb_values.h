// Expected model values: unnamed components are zero; lists of names are compared as one text.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>

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

// Compares all sixteen slots bit by bit.
inline bool operator==(const pbValue& a, const pbValue& b) {
    return a.ints == b.ints;
}

// The names, separated by '|'.
inline std::string joined(std::initializer_list<pbName> names) {
    std::string text;
    for (const pbName& name : names)
        text.append(&name == names.begin() ? "" : "|").append(nameText(name));
    return text;
}
