// What the formats can store.
#pragma once

#include <OpenImageIO/imageio.h>

#include <string_view>

#include "pbhost/pictures/picture_formats.h"

namespace pbhost {

OIIO::TypeDesc typeDescOf(ValueType type);

// The type in which the format stores pixels of that depth; the header's type if it fits.
OIIO::TypeDesc storedType(const Picture& picture, std::string_view format);

// Why the format cannot store what the options ask for.
Fault faultOfOptions(std::string_view format, const WriteOptions& options);

// Sets the attributes for compression and quality.
void setCompression(std::string_view format, const WriteOptions& options, OIIO::ImageSpec& spec);

} // namespace pbhost
