// The interface of the picture format library, which is loaded at first use and never unloaded.
// Only standard exceptions leave the library, and it exports only the function below.
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

    // Both return the reason of a failure, or an empty text. The file must exist; its content may
    // be anything. After a failure the picture is undefined.
    virtual std::string read(const std::filesystem::path& path, std::optional<Depth> depth,
                             Picture& picture) const = 0;
    // Overwrites the file. The picture must contain the pixels of its size.
    virtual std::string write(const std::filesystem::path& path, const Picture& picture) const = 0;

    // Whether a format has that extension, including the dot.
    virtual bool canWrite(const std::string& extension) const = 0;
};

// Used by both sides. Why the size is invalid, or an empty text. Sizes come from files and may be
// anything, so the product is computed without overflow.
inline std::string sizeFault(std::int64_t width, std::int64_t height, std::uint64_t pixelBytes) {
    constexpr std::uint64_t largestBytes = std::uint64_t{1} << 31;
    constexpr std::int64_t largestSide = std::int64_t{1} << 30;
    if (width > 0 && height > 0 && width <= largestSide && height <= largestSide &&
        std::uint64_t(width) * std::uint64_t(height) <= largestBytes / pixelBytes)
        return {};
    return "a picture of " + std::to_string(width) + " by " + std::to_string(height) +
           " pixels is empty or too large";
}

// A picture of transparent black; sizeFault must be empty for the size.
inline Picture emptyPicture(unsigned width, unsigned height, Depth depth) {
    Picture picture{width, height, depth, width * bytesPerPixel(depth), {}};
    picture.pixels.resize(std::size_t{picture.rowBytes} * height);
    return picture;
}

} // namespace pbhost

// The only function that the library exports.
extern "C" __attribute__((visibility("default"))) const pbhost::PictureFormats*
pbhostPictureFormats();
