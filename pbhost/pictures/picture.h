// Pictures in the host's memory layout, read and written by OpenImageIO. A picture owns its pixels.
// Values are those of the file: alpha is neither multiplied nor divided, and no colour space
// conversion is applied. The functions are thread-safe; they throw Failure with the file's name and
// the reason, and leave no partial results. The first call loads the library of the formats, and
// throws Failure (RenderFailed) without it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

namespace pbhost {

// Bits per channel. White is 255, 32768 (not 65535) and 1.0; 32 bits are IEEE floats.
enum class Depth { Bits8, Bits16, Bits32 };

inline constexpr unsigned channelsPerPixel = 4; // in memory order: alpha, red, green, blue

constexpr unsigned componentBytesOf(Depth depth) {
    return depth == Depth::Bits8 ? 1 : depth == Depth::Bits16 ? 2 : 4;
}
constexpr unsigned bytesPerPixel(Depth depth) {
    return channelsPerPixel * componentBytesOf(depth);
}

// The depth for 8, 16 or 32 bits per channel; nothing for any other number.
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
    unsigned rowBytes = 0;         // distance between rows, at least a row's pixels
    std::vector<std::byte> pixels; // pixels of 32 bits are aligned to 16 bytes if the rows are

    std::byte* row(unsigned y) { return pixels.data() + std::size_t{rowBytes} * y; }
    const std::byte* row(unsigned y) const { return pixels.data() + std::size_t{rowBytes} * y; }
};

// A picture of transparent black without row padding. Throws Failure (Usage) for an empty size or
// more than 2 GiB.
Picture makePicture(unsigned width, unsigned height, Depth depth);

// Reads any format of OpenImageIO; only the first image of a file. Without a depth, the file
// decides: 8-bit integers give 8 bits, other integers 16, floats of any size 32. Grey becomes equal
// red, green and blue; a file without alpha is opaque. The rows are not padded. Throws Failure
// (BadPicture).
Picture readPicture(const std::filesystem::path& path, std::optional<Depth> depth = std::nullopt);

// Throw Failure (RenderFailed) if writePicture could not write any picture there: because the
// folder is not writable or the path is no regular file, or because no format has the extension.
void requirePlace(const std::filesystem::path& path);
void requireFormat(const std::filesystem::path& path);

// Writes the format of the extension, in the supported depth closest to the picture's, and without
// alpha if the format has none. The file is replaced atomically when it is complete; on failure
// (RenderFailed) an existing file is unchanged.
void writePicture(const std::filesystem::path& path, const Picture& picture);

} // namespace pbhost
