// The module's rules for file name extensions.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

// Only the last letter distinguishes graphs and kernels.
inline bool endsLikeGraph(std::string_view path) {
    return path.ends_with('g') || path.ends_with('G');
}
inline bool endsLikeKernel(std::string_view path) {
    return path.ends_with('k') || path.ends_with('K');
}

// Whether a marker's comment names a file: the extension is all lower case or all upper case.
inline bool isMarkerPath(std::string_view comment) {
    constexpr std::size_t shortest = 5; // bytes
    constexpr std::array<std::string_view, 4> endings = {"pbk", "PBK", "pbg", "PBG"};
    return comment.size() >= shortest &&
           std::ranges::any_of(endings, [&](auto ending) { return comment.ends_with(ending); });
}
