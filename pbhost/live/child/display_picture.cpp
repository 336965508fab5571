#include "pbhost/live/child/display_picture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace pbhost::live {

namespace {

using Byte = std::uint8_t;
using Pixel = std::array<Byte, 4>; // alpha, red, green, blue

constexpr std::array<std::string_view, 6> names = {"composite", "color", "red",
                                                   "green",     "blue",  "alpha"};

// Conversions of a depth's channels to 8 bits.

struct Bits8 {
    using Value = std::uint8_t;
    Byte alpha(Value value) const { return value; }
    Byte color(Value value) const { return value; }
};

struct Bits16 {
    using Value = std::uint16_t;
    Byte alpha(Value value) const {
        constexpr unsigned white = 32768;
        return static_cast<Byte>((std::min<unsigned>(value, white) * 255 + white / 2) / white);
    }
    Byte color(Value value) const { return alpha(value); }
};

struct Bits32 {
    using Value = float;
    float gain; // of the colours only
    Byte alpha(Value value) const {
        return !(value > 0) ? Byte{0} // NaN, too
                            : static_cast<Byte>(std::lrint(std::min(value, 1.0F) * 255.0F));
    }
    Byte color(Value value) const { return alpha(value * gain); }
};

// The squares have a fixed share of the width, so that they look alike in all pictures that are
// fitted into a window.
struct Checkerboard {
    explicit Checkerboard(int width) : square(std::max(4, width / 96)) {}
    Byte at(int x, int y) const { return (x / square + y / square) % 2 == 0 ? 102 : 153; }
    int square; // pixels
};

Byte over(unsigned color, unsigned background, unsigned alpha) {
    return static_cast<Byte>((color * alpha + background * (255 - alpha) + 127) / 255);
}

Pixel shown(const Pixel& pixel, Channels channels, const Checkerboard& board, int x, int y) {
    if (channels == Channels::Color || (channels == Channels::Composite && pixel[0] == 255))
        return pixel;
    if (channels == Channels::Composite) {
        const Byte background = board.at(x, y);
        return {255, over(pixel[1], background, pixel[0]), over(pixel[2], background, pixel[0]),
                over(pixel[3], background, pixel[0])};
    }
    constexpr std::array<std::size_t, 6> sources = {0, 0, 1, 2, 3, 0};
    const Byte grey = pixel[sources[static_cast<std::size_t>(channels)]];
    return {255, grey, grey, grey};
}

const std::byte* rowOf(const hostkit::World& frame, int y) {
    return frame.data.data() + static_cast<std::size_t>(frame.rowBytes) * static_cast<unsigned>(y);
}

template<class Depth>
void fill(DisplayPicture& target, const hostkit::World& frame, Channels channels,
          const Depth& depth) {
    const Checkerboard board(frame.width);
    auto* out = reinterpret_cast<Byte*>(target.pixels.data());
    for (int y = 0; y < frame.height; ++y) {
        const std::byte* in = rowOf(frame, y);
        for (int x = 0; x < frame.width; ++x, out += 4) {
            std::array<typename Depth::Value, 4> stored;
            std::memcpy(&stored, in, sizeof stored);
            in += sizeof stored;
            const Pixel pixel = shown({depth.alpha(stored[0]), depth.color(stored[1]),
                                       depth.color(stored[2]), depth.color(stored[3])},
                                      channels, board, x, y);
            std::memcpy(out, &pixel[1], 3);
            out[3] = 255;
        }
    }
}

// Opaque 8-bit pixels only change the order of their channels. Returns false if a pixel is not
// opaque.
bool fillOpaque(DisplayPicture& target, const hostkit::World& frame) {
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint32_t opaque = 0xff;
    auto* out = reinterpret_cast<std::uint32_t*>(target.pixels.data());
    for (int y = 0; y < frame.height; ++y, out += frame.width) {
        const auto* in = reinterpret_cast<const std::uint32_t*>(rowOf(frame, y));
        std::uint32_t all = opaque;
        for (int x = 0; x < frame.width; ++x) {
            all &= in[x];
            out[x] = in[x] >> 8 | opaque << 24;
        }
        if ((all & opaque) != opaque)
            return false;
    }
    return true;
}

template<typename Value>
std::vector<double> readPixel(const std::byte* at) {
    std::array<Value, 4> stored;
    std::memcpy(&stored, at, sizeof stored);
    return {double(stored[1]), double(stored[2]), double(stored[3]), double(stored[0])};
}

} // namespace

std::optional<Channels> channelsOf(std::string_view name) {
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? std::nullopt
                                : std::optional(static_cast<Channels>(found - names.begin()));
}

DisplayPicture displayPicture(const hostkit::World& frame, const Display& display) {
    DisplayPicture picture;
    picture.width = static_cast<unsigned>(frame.width);
    picture.height = static_cast<unsigned>(frame.height);
    picture.pixels.resize(std::size_t{picture.width} * picture.height * 4);
    if (frame.componentBytes == 2)
        fill(picture, frame, display.channels, Bits16());
    else if (frame.componentBytes == 4)
        fill(picture, frame, display.channels,
             Bits32{std::exp2(static_cast<float>(display.exposure))});
    else if (display.channels > Channels::Color || !fillOpaque(picture, frame))
        fill(picture, frame, display.channels, Bits8());
    return picture;
}

// Sums two channels at a time, each in half of a word: of 64 pixels at most.
DisplayPicture reduced(const DisplayPicture& picture, unsigned factor) {
    constexpr std::uint32_t everySecond = 0x00ff00ff;
    factor = std::min({factor, largestReduction, picture.width, picture.height});
    DisplayPicture small;
    small.width = picture.width / factor;
    small.height = picture.height / factor;
    small.pixels.resize(std::size_t{small.width} * small.height * 4);
    auto* out = reinterpret_cast<std::uint32_t*>(small.pixels.data());
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(picture.pixels.data());
    const std::uint32_t count = factor * factor, half = count / 2;
    std::vector<std::uint32_t> even(small.width), odd(small.width);
    for (unsigned y = 0; y < small.height; ++y) {
        std::fill(even.begin(), even.end(), half << 16 | half);
        std::fill(odd.begin(), odd.end(), half << 16 | half);
        for (unsigned k = 0; k < factor; ++k) {
            const std::uint32_t* in = pixels + (std::size_t{y} * factor + k) * picture.width;
            for (unsigned i = 0; i < factor; ++i, ++in)
                for (unsigned x = 0; x < small.width; ++x) {
                    even[x] += in[x * factor] & everySecond;
                    odd[x] += in[x * factor] >> 8 & everySecond;
                }
        }
        for (unsigned x = 0; x < small.width; ++x)
            *out++ = (even[x] & 0xffff) / count | (odd[x] & 0xffff) / count << 8 |
                     (even[x] >> 16) / count << 16 | (odd[x] >> 16) / count << 24;
    }
    return small;
}

std::vector<double> pixelAt(const hostkit::World& frame, int x, int y) {
    if (x < 0 || y < 0 || x >= frame.width || y >= frame.height)
        return {};
    const std::byte* at = rowOf(frame, y) + frame.pixelBytes() * x;
    return frame.componentBytes == 1   ? readPixel<std::uint8_t>(at)
           : frame.componentBytes == 2 ? readPixel<std::uint16_t>(at)
                                       : readPixel<float>(at);
}

} // namespace pbhost::live
