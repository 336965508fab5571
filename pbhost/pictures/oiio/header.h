// The header of a file: what the effect's host needs of it, and its metadata for the file to write.
#pragma once

#include <OpenImageIO/imageio.h>

#include <string_view>

#include "pbhost/pictures/oiio/channel_selection.h"
#include "pbhost/pictures/picture.h"

namespace pbhost {

struct OiioHeader : PictureHeader {
    OIIO::ImageSpec spec;          // of the image that was read
    std::string greyChannel = "Y"; // what OpenEXR calls the single colour of a grey picture
};

// The header of an image, without its orientation.
OiioHeader headerOf(const OIIO::ImageSpec& spec, std::string_view format,
                    const Selection& selection);

// The alpha that files of a format have. Nothing for TIFF, which has both.
std::optional<Alpha> alphaOfFormat(std::string_view format);

// Copies the header's metadata to the description of a file of another or the same format. Left out
// is what describes how the pixels were stored, and what was derived from them.
void copyMetadata(const OiioHeader& header, std::string_view format, OIIO::ImageSpec& spec);

} // namespace pbhost
