// Encodes the picture that a page shows.
#pragma once

#include <cstddef>
#include <vector>

#include "pbhost/live/child/display_picture.h"

namespace pbhost::live {

// Lossy and small, for pictures that are replaced soon. Throws Failure (RenderFailed).
std::vector<std::byte> encodeJpeg(const DisplayPicture& picture);

// Lossless, for connections on which the size matters. Throws Failure (RenderFailed).
std::vector<std::byte> encodePng(const DisplayPicture& picture);

} // namespace pbhost::live
