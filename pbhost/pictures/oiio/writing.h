// Writing of a picture with OpenImageIO.
#pragma once

#include "pbhost/pictures/picture_formats.h"

namespace pbhost {

Fault writeFile(const std::filesystem::path& path, const Picture& picture,
                const WriteOptions& options, bool& isAlphaDropped);

Fault formatFault(const std::string& extension, const WriteOptions& options);

} // namespace pbhost
