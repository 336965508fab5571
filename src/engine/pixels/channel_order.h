// The channel orders that a host's pixels can have. An index into the table is called `swizzle`.
//
// Pixels are uploaded in the host's order. The swizzle `in` converts a texel to red, green, blue,
// alpha; `out` converts a kernel's result back. So no kernel depends on the host's order.
#pragma once

#include <array>
#include <cstdint>

struct ChannelOrder {
    const char* in;
    const char* out;
};

inline constexpr std::array<ChannelOrder, 24> channelOrders = {{
    {".rgba", ".rgba"}, // 0
    {".rgab", ".rgab"}, // 1
    {".rbga", ".rbga"}, // 2
    {".ragb", ".rbag"}, // 3
    {".rbag", ".ragb"}, // 4
    {".rabg", ".rabg"}, // 5
    {".grba", ".grba"}, // 6
    {".grab", ".grab"}, // 7
    {".brga", ".gbra"}, // 8
    {".argb", ".gbar"}, // 9
    {".brag", ".garb"}, // 10
    {".arbg", ".gabr"}, // 11
    {".gbra", ".brga"}, // 12
    {".garb", ".brag"}, // 13
    {".bgra", ".bgra"}, // 14
    {".agrb", ".bgar"}, // 15
    {".barg", ".barg"}, // 16
    {".abrg", ".bagr"}, // 17
    {".gbar", ".argb"}, // 18
    {".gabr", ".arbg"}, // 19
    {".bgar", ".agrb"}, // 20
    {".agbr", ".agbr"}, // 21
    {".bagr", ".abrg"}, // 22
    {".abgr", ".abgr"}, // 23
}};

// Alpha, red, green, blue in memory: the order of the host.
inline constexpr std::uint32_t hostSwizzle = 18;
