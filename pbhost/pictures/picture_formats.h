// The picture formats as a library that is opened when they are first needed. What crosses its
// border is this interface: no exception but those of the standard library, no function but the one
// below. The library stays open until the program ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "pbhost/pictures/picture.h"

namespace pbhost {

class PictureFormats {
public:
    virtual ~PictureFormats() = default;

    // These give the reason of a failure, or an empty text. The file must be there; what it holds
    // may be anything. On failure the picture is of no use.
    virtual std::string read(const std::filesystem::path& path, std::optional<Depth> depth,
                             Picture& picture) const = 0;
    // Writes over the file. The picture must have the pixels that its size tells.
    virtual std::string write(const std::filesystem::path& path, const Picture& picture) const = 0;

    // Whether a format has that extension, with its dot.
    virtual bool canWrite(const std::string& extension) const = 0;
};

// Both sides need these. What is wrong with a size, or an empty text: the sides come from files, so
// they may be anything; the product is taken without overflow.
inline std::string sizeFault(std::int64_t width, std::int64_t height, std::uint64_t pixelBytes) {
    constexpr std::uint64_t largestBytes = std::uint64_t{1} << 31;
    constexpr std::int64_t largestSide = std::int64_t{1} << 30;
    if (width > 0 && height > 0 && width <= largestSide && height <= largestSide &&
        std::uint64_t(width) * std::uint64_t(height) <= largestBytes / pixelBytes)
        return {};
    return "a picture of " + std::to_string(width) + " by " + std::to_string(height) +
           " pixels is empty or too large";
}

// Transparent black; the size must be without fault.
inline Picture emptyPicture(unsigned width, unsigned height, Depth depth) {
    Picture picture{width, height, depth, width * bytesPerPixel(depth), {}};
    picture.pixels.resize(std::size_t{picture.rowBytes} * height);
    return picture;
}

} // namespace pbhost

// The library's one exported function.
extern "C" __attribute__((visibility("default"))) const pbhost::PictureFormats*
pbhostPictureFormats();
