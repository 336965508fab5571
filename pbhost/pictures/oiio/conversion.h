// Conversion of pixels between conventions of alpha, colour spaces, depths and orientations.
#pragma once

#include <OpenImageIO/color.h>

#include <cstddef>
#include <string>

#include "pbhost/pictures/picture_formats.h"

namespace pbhost {

// Converts pixels of four floats: red, green, blue, alpha.
class PixelConversion {
public:
    // The alpha of the pixels before and after. Colours are converted from one space to the other,
    // if both are named and differ.
    PixelConversion(Alpha before, Alpha after) : before_(before), after_(after) {}

    // Returns the reason if there is no such conversion.
    Fault setColours(const std::string& from, const std::string& to,
                     const std::string& configuration);

    bool isNone() const { return before_ == after_ && !colours_; }
    void apply(float* pixels, std::size_t count) const;

private:
    Alpha before_, after_;
    OIIO::ColorProcessorHandle colours_;
};

// The colour space that pixels of a file are taken to have.
std::string assumedSpace(const std::string& stated, ValueType type);

// Converts a picture of 32 bits in place, or to another depth.
void convertPicture(Picture& picture, const PixelConversion& conversion);
Picture toDepth(const Picture& picture, Depth depth);

// Rows `top` to before `bottom` as floats, red, green, blue, alpha, 1 is white.
void takeFloats(const Picture& picture, unsigned top, unsigned bottom, float* target);

// The picture as it is to be shown; `orientation` is the number of the Exif standard, 1 to 8.
Picture oriented(const Picture& picture, int orientation);

// Whether all pixels are grey, or opaque.
bool isAllGrey(const Picture& picture);
bool isAllOpaque(const Picture& picture);

} // namespace pbhost
