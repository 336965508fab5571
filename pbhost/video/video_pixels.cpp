#include "pbhost/video/video_pixels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace pbhost {

namespace {

// Where channel c of the host (alpha, red, green, blue) of pixel i is in the raw format.
std::size_t placeOf(std::size_t i, unsigned c, std::size_t pixels, Depth depth) {
    if (depth != Depth::Bits32)
        return i * 4 + (c + 3) % 4;
    constexpr std::size_t plane[4] = {3, 2, 0, 1};
    return plane[c] * pixels + i;
}

// Between the host's white of 32768 and 65535.
std::uint16_t fromFull(std::uint16_t value) {
    return std::uint16_t((value * 32768U + 32767U) / 65535U);
}
std::uint16_t toFull(std::uint16_t value) {
    return std::uint16_t((std::min<std::uint32_t>(value, 32768) * 65535U + 16384U) / 32768U);
}

template<typename Value>
Value read(const std::byte* at) {
    Value value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template<typename Value, typename Convert>
void unpack(const std::vector<std::byte>& bytes, Picture& picture, Convert convert) {
    const std::size_t pixels = std::size_t{picture.width} * picture.height;
    for (std::size_t i = 0; i < pixels; ++i)
        for (unsigned c = 0; c < 4; ++c) {
            const Value value =
                convert(read<Value>(&bytes[placeOf(i, c, pixels, picture.depth) * sizeof(Value)]));
            std::memcpy(&picture.pixels[(i * 4 + c) * sizeof(Value)], &value, sizeof value);
        }
}

template<typename Value, typename Convert>
void pack(const Picture& picture, std::vector<std::byte>& bytes, Convert convert) {
    const std::size_t pixels = std::size_t{picture.width} * picture.height;
    std::size_t i = 0;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x, ++i)
            for (unsigned c = 0; c < 4; ++c) {
                const Value value =
                    convert(read<Value>(picture.row(y) + (x * 4 + c) * sizeof(Value)));
                std::memcpy(&bytes[placeOf(i, c, pixels, picture.depth) * sizeof(Value)], &value,
                            sizeof value);
            }
}

} // namespace

std::string videoFormat(Depth depth) {
    return depth == Depth::Bits8 ? "rgba" : depth == Depth::Bits16 ? "rgba64le" : "gbrapf32le";
}

Picture fromVideo(const std::vector<std::byte>& bytes, unsigned width, unsigned height,
                  Depth depth) {
    Picture picture = makePicture(width, height, depth);
    if (depth == Depth::Bits8)
        unpack<std::uint8_t>(bytes, picture, [](std::uint8_t value) { return value; });
    else if (depth == Depth::Bits16)
        unpack<std::uint16_t>(bytes, picture, fromFull);
    else
        unpack<std::uint32_t>(bytes, picture, [](std::uint32_t value) { return value; });
    return picture;
}

std::vector<std::byte> toVideo(const Picture& picture) {
    std::vector<std::byte> bytes(std::size_t{picture.width} * picture.height *
                                 bytesPerPixel(picture.depth));
    if (picture.depth == Depth::Bits8)
        pack<std::uint8_t>(picture, bytes, [](std::uint8_t value) { return value; });
    else if (picture.depth == Depth::Bits16)
        pack<std::uint16_t>(picture, bytes, toFull);
    else
        pack<std::uint32_t>(picture, bytes, [](std::uint32_t value) { return value; });
    return bytes;
}

} // namespace pbhost
