#include "pixelbender/source_map.h"

#include <algorithm>

void SourceMap::add(std::size_t at, std::size_t source, std::size_t length) {
    if (length == 0)
        return;
    if (!stretches_.empty()) {
        Stretch& last = stretches_.back();
        if (last.at + last.length == at && last.source + last.length == source) {
            last.length += length;
            return;
        }
    }
    stretches_.push_back({at, source, length});
}

std::optional<std::size_t> SourceMap::sourceOf(std::size_t at) const {
    const auto behind =
        std::upper_bound(stretches_.begin(), stretches_.end(), at,
                         [](std::size_t place, const Stretch& each) { return place < each.at; });
    if (behind == stretches_.begin() || at - behind[-1].at >= behind[-1].length)
        return std::nullopt;
    return behind[-1].source + (at - behind[-1].at);
}
