#include "engine/pixels/channel_scale.h"

// Both loops have no branches and use only 16 bits, so that a compiler can vectorize them.

void doubleChannels(const std::uint16_t* from, std::uint16_t* to, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        // All ones where doubling would overflow.
        const auto saturated = static_cast<std::int16_t>(static_cast<std::int16_t>(from[i]) >> 15);
        to[i] = static_cast<std::uint16_t>((from[i] << 1) | saturated);
    }
}

void halveChannels(std::uint16_t* channels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto half = static_cast<std::uint16_t>(channels[i] >> 1);
        channels[i] = static_cast<std::uint16_t>(half + (channels[i] & half & 1));
    }
}
