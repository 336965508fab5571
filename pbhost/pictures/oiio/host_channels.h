// The representation of a channel in the host's memory, and its conversion to and from the file's.
#pragma once

#include <OpenImageIO/typedesc.h>

#include <algorithm>
#include <bit>
#include <cstdint>

#include "pbhost/pictures/picture.h"

namespace pbhost {

template<typename Value, Value full>
struct SameInFile {
    using Type = Value;
    static constexpr Type white = full;
    static Type toHost(Type value) { return value; }
    static Type toFile(Type value) { return value; }
};
using Channel8 = SameInFile<std::uint8_t, 255>;
// Floats are copied as bit patterns, so that NaNs are preserved.
using Channel32 = SameInFile<std::uint32_t, std::bit_cast<std::uint32_t>(1.0f)>;
struct Channel16 {
    using Type = std::uint16_t;
    static constexpr Type white = 32768;
    static Type toHost(Type value) { return Type((value * 32768u + 32767u) / 65535u); }
    static Type toFile(Type value) {
        return Type((std::min(value, white) * 65535u + 16384u) / 32768u);
    }
};

template<typename Work>
auto withChannel(Depth depth, Work work) {
    switch (depth) {
    case Depth::Bits8:
        return work(Channel8{});
    case Depth::Bits16:
        return work(Channel16{});
    default:
        return work(Channel32{});
    }
}

// The type of the file's values in memory, before toHost and after toFile.
inline OIIO::TypeDesc bufferType(Depth depth) {
    return depth == Depth::Bits8    ? OIIO::TypeDesc::UINT8
           : depth == Depth::Bits16 ? OIIO::TypeDesc::UINT16
                                    : OIIO::TypeDesc::FLOAT;
}

} // namespace pbhost
