// Converts a frame to the 8-bit picture that a page shows.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "hostkit/project/project.h"

namespace pbhost::live {

// What is shown: the colours over a checkerboard where they are transparent, the colours without
// alpha, or one channel as grey.
enum class Channels { Composite, Color, Red, Green, Blue, Alpha };

// By the names "composite", "color", "red", "green", "blue", "alpha"; nothing for any other.
std::optional<Channels> channelsOf(std::string_view name);

struct Display {
    Channels channels = Channels::Composite;
    double exposure = 0; // stops, for 32 bits only: values are multiplied by 2 to this power
};

// Rows without padding, four bytes per pixel: red, green, blue, 255.
struct DisplayPicture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<std::byte> pixels;
};

DisplayPicture displayPicture(const hostkit::World& frame, const Display& display);

// The picture at 1/factor of its size, with the mean of the pixels of each square; pixels that do
// not fill a square at the right and at the bottom are left out. A factor that is too large is
// reduced.
inline constexpr unsigned largestReduction = 8;
DisplayPicture reduced(const DisplayPicture& picture, unsigned factor);

// The channels of a pixel in the order red, green, blue, alpha, as the depth stores them: 0 to 255,
// 0 to 32768, or a float. Empty outside the frame.
std::vector<double> pixelAt(const hostkit::World& frame, int x, int y);

} // namespace pbhost::live
