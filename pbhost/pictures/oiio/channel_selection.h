// Which channels of an image form a pixel.
#pragma once

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <optional>
#include <string>

namespace pbhost {

// The file's channels that form a pixel; alpha is -1 if there is none.
struct Selection {
    int red, green, blue, alpha;

    int first() const {
        const int lowest = std::min({red, green, blue});
        return alpha < 0 ? lowest : std::min(lowest, alpha);
    }
    int end() const { return std::max({red, green, blue, alpha}) + 1; }
    int count() const { return end() - first(); }
    bool isGrey() const { return red == green && green == blue; }
    bool has(int channel) const {
        return channel == red || channel == green || channel == blue || channel == alpha;
    }
};

// The channels R, G, B or Y, and A; without these names the first ones.
Selection selectChannels(const OIIO::ImageSpec& spec);

// The channels "PREFIX.R" and so on; nothing if the image does not have them.
std::optional<Selection> selectLayer(const OIIO::ImageSpec& spec, const std::string& prefix);

// The names of the channels that are not selected, separated by blanks.
std::string otherChannels(const OIIO::ImageSpec& spec, const Selection& selection);

// The prefixes of the image's channels that selectLayer accepts, separated by blanks.
std::string layersOf(const OIIO::ImageSpec& spec);

} // namespace pbhost
