// The interface of the picture format library, which is loaded at first use and never unloaded.
// Only standard exceptions leave the library, and it exports only the function below.
#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

#include "pbhost/pictures/picture.h"

namespace pbhost {

// Why something could not be done; empty: it was done.
struct Fault {
    std::string reason;
    bool isUsage = false; // the options cannot be satisfied

    bool isNone() const { return reason.empty(); }
};

class PictureFormats {
public:
    virtual ~PictureFormats() = default;

    // The file must exist; its content may be anything. After a failure the picture is undefined.
    virtual Fault read(const std::filesystem::path& path, const ReadOptions& options,
                       Picture& picture) const = 0;
    // Overwrites the file. The picture must contain the pixels of its size.
    virtual Fault write(const std::filesystem::path& path, const Picture& picture,
                        const WriteOptions& options, bool& isAlphaDropped) const = 0;

    // Whether a format has that extension, including the dot, and what the options ask for.
    virtual Fault checkFormat(const std::string& extension, const WriteOptions& options) const = 0;

    virtual void setThreads(int threads) const = 0;
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

// The same, opaque.
inline Picture opaqueBlack(unsigned width, unsigned height, Depth depth) {
    Picture picture = emptyPicture(width, height, depth);
    const unsigned bytes = componentBytesOf(depth);
    const float whiteFloat = 1;
    const std::uint16_t white16 = 32768;
    const std::uint8_t white8 = 255;
    const void* const white = bytes == 4   ? static_cast<const void*>(&whiteFloat)
                              : bytes == 2 ? static_cast<const void*>(&white16)
                                           : static_cast<const void*>(&white8);
    for (std::size_t at = 0; at < picture.pixels.size(); at += bytesPerPixel(depth))
        std::memcpy(&picture.pixels[at], white, bytes);
    return picture;
}

} // namespace pbhost

// The only function that the library exports.
extern "C" __attribute__((visibility("default"))) const pbhost::PictureFormats*
pbhostPictureFormats();
