// Pictures in the host's memory layout, read from files and written to files by OpenImageIO.
// A picture owns its pixels. The values are those of the file: nothing is multiplied by alpha or
// divided by it, and no colour space is applied. The functions may be called from any thread; they
// throw Failure, whose message names the file and the reason, and leave nothing half done. The
// first call opens the library of the formats, and throws Failure (RenderFailed) without it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

namespace pbhost {

// Bits of one channel. White is 255, 32768 (not 65535) and 1.0; 32 bits are IEEE floats.
enum class Depth { Bits8, Bits16, Bits32 };

inline constexpr unsigned channelsPerPixel = 4; // in memory order: alpha, red, green, blue

constexpr unsigned componentBytesOf(Depth depth) {
    return depth == Depth::Bits8 ? 1 : depth == Depth::Bits16 ? 2 : 4;
}
constexpr unsigned bytesPerPixel(Depth depth) {
    return channelsPerPixel * componentBytesOf(depth);
}

// Of 8, 16 or 32 bits per channel; nothing for any other number.
constexpr std::optional<Depth> depthOfBits(int bits) {
    return bits == 8    ? std::optional(Depth::Bits8)
           : bits == 16 ? std::optional(Depth::Bits16)
           : bits == 32 ? std::optional(Depth::Bits32)
                        : std::nullopt;
}

struct Picture {
    unsigned width = 0;  // pixels
    unsigned height = 0; // pixels, row 0 is the topmost
    Depth depth = Depth::Bits8;
    unsigned rowBytes = 0;         // from one row to the next; at least the pixels of a row
    std::vector<std::byte> pixels; // a pixel of 32 bits starts at a multiple of 16 if the rows do

    std::byte* row(unsigned y) { return pixels.data() + std::size_t{rowBytes} * y; }
    const std::byte* row(unsigned y) const { return pixels.data() + std::size_t{rowBytes} * y; }
};

// Transparent black, without padding between the rows. Throws Failure (Usage) for an empty picture
// or one of more than 2 GiB.
Picture makePicture(unsigned width, unsigned height, Depth depth);

// Reads any format of OpenImageIO; of several pictures in a file the first. Without a depth the
// file decides: 8-bit integers give 8 bits, other integers 16, floats of any size 32. Grey becomes
// equal red, green and blue; a file without alpha is opaque. The rows are not padded. Throws
// Failure (BadPicture).
Picture readPicture(const std::filesystem::path& path, std::optional<Depth> depth = std::nullopt);

// Throw Failure (RenderFailed) when writePicture could not write any picture there: because of the
// place, which needs no library of formats, or because no format has the extension.
void requirePlace(const std::filesystem::path& path);
void requireFormat(const std::filesystem::path& path);

// Writes the format that the extension names, as near to the picture's depth as that format comes,
// and without alpha where the format has none. The file appears under its name only when it is
// complete; on failure (RenderFailed) an older file of that name stays as it was.
void writePicture(const std::filesystem::path& path, const Picture& picture);

} // namespace pbhost
