// Reading of a picture with OpenImageIO.
#pragma once

#include "pbhost/pictures/picture_formats.h"

namespace pbhost {

Fault readFile(const std::filesystem::path& path, const ReadOptions& options, Picture& picture);

// A message of the library without line ends, or one for damaged files if it is empty.
std::string reasonOf(const std::string& message);

} // namespace pbhost
