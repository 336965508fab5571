// Conversion between pictures and the raw pixels of the program ffmpeg.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "pbhost/pictures/picture.h"

namespace pbhost {

// The name of the raw format: red, green, blue, alpha, of floats in planes green, blue, red, alpha.
std::string videoFormat(Depth depth);

Picture fromVideo(const std::vector<std::byte>& bytes, unsigned width, unsigned height,
                  Depth depth);
std::vector<std::byte> toVideo(const Picture& picture);

} // namespace pbhost
