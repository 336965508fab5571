#include "pbhost/pictures/oiio/header.h"

#include <OpenImageIO/strutil.h>

#include <array>

namespace pbhost {

namespace {

template<std::size_t count>
bool isIn(const std::array<std::string_view, count>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 8> straightFormats = {"png", "targa", "heif", "bmp",
                                                             "ico", "gif",   "webp", "jpeg2000"};

ValueType typeOf(const OIIO::TypeDesc& type) {
    if (type.is_floating_point())
        return type == OIIO::TypeDesc::HALF ? ValueType::Half : ValueType::Float;
    return type.size() == 1 ? ValueType::UInt8 : ValueType::UInt16;
}

Alpha alphaOfFile(const OIIO::ImageSpec& spec, std::string_view format, bool hasAlpha) {
    if (spec.get_int_attribute("oiio:UnassociatedAlpha") != 0)
        return Alpha::Straight;
    if (format == "webp" && hasAlpha) // the library multiplies when it reads
        return Alpha::Premultiplied;
    return alphaOfFormat(format).value_or(hasAlpha ? Alpha::Premultiplied : Alpha::Straight);
}

std::optional<double> frameRate(const OIIO::ImageSpec& spec) {
    const OIIO::ParamValue* found = spec.find_attribute("FramesPerSecond");
    if (found == nullptr)
        return std::nullopt;
    double rate = found->get_float();
    if (found->type() == OIIO::TypeRational) {
        const auto* parts = static_cast<const int*>(found->data());
        rate = parts[1] == 0 ? 0 : double(parts[0]) / parts[1];
    }
    return rate > 0 ? std::optional(rate) : std::nullopt;
}

// What the written file states itself, or what is no longer true of it.
constexpr std::array<std::string_view, 22> neverCopied = {"Orientation",
                                                          "oiio:UnassociatedAlpha",
                                                          "oiio:ColorSpace",
                                                          "oiio:subimages",
                                                          "oiio:subimagename",
                                                          "oiio:SHA-1",
                                                          "oiio:AverageColor",
                                                          "oiio:ConstantColor",
                                                          "thumbnail_width",
                                                          "thumbnail_height",
                                                          "thumbnail_nchannels",
                                                          "thumbnail_image",
                                                          "planarconfig",
                                                          "tiff:PlanarConfiguration",
                                                          "tiff:RowsPerStrip",
                                                          "tiff:subfiletype",
                                                          "textureformat",
                                                          "openexr:lineOrder",
                                                          "openexr:chunkCount",
                                                          "tiff:PhotometricInterpretation",
                                                          "name",
                                                          "openexr:version"};
constexpr std::array<std::string_view, 3> ofStorage = {"compression", "oiio:BitsPerSample",
                                                       "tiff:Compression"};
constexpr std::array<std::string_view, 12> formatPrefixes = {
    "openexr", "png", "tiff", "jpeg", "dpx", "targa", "bmp", "gif", "ico", "webp", "cineon", "dds"};

bool isOfOtherFormat(const std::string& name, std::string_view format) {
    const std::size_t colon = name.find(':');
    return colon != std::string::npos && isIn(formatPrefixes, name.substr(0, colon)) &&
           name.substr(0, colon) != format;
}

} // namespace

std::optional<Alpha> alphaOfFormat(std::string_view format) {
    if (format == "tiff")
        return std::nullopt;
    return isIn(straightFormats, format) ? Alpha::Straight : Alpha::Premultiplied;
}

OiioHeader headerOf(const OIIO::ImageSpec& spec, std::string_view format,
                    const Selection& selection) {
    OiioHeader header;
    header.format = format;
    header.type = typeOf(spec.channelformat(selection.red));
    header.hasAlpha = selection.alpha >= 0;
    header.alpha = alphaOfFile(spec, format, header.hasAlpha);
    header.isGrey = selection.isGrey();
    header.colourSpace = spec.get_string_attribute("oiio:ColorSpace");
    header.data = {spec.x, spec.y, spec.width, spec.height};
    // Only in OpenEXR are the windows about the pixels' places. Offsets in other formats are for
    // page layout.
    header.display = format == "openexr" && spec.full_width > 0 && spec.full_height > 0
                         ? Window{spec.full_x, spec.full_y, spec.full_width, spec.full_height}
                         : header.data;
    header.framesPerSecond = frameRate(spec);
    header.spec = spec;
    if (header.isGrey && format == "openexr" &&
        spec.channelnames.size() > unsigned(selection.red)) {
        const std::string& name = spec.channelnames[unsigned(selection.red)];
        header.greyChannel = name.substr(name.rfind('.') + 1); // without the layer
    }
    return header;
}

void copyMetadata(const OiioHeader& header, std::string_view format, OIIO::ImageSpec& spec) {
    const bool isSame = header.format == format;
    for (const OIIO::ParamValue& value : header.spec.extra_attribs) {
        const std::string name = value.name().string();
        const bool isLeftOut = isIn(neverCopied, name) || isOfOtherFormat(name, format) ||
                               (!isSame && isIn(ofStorage, name));
        if (!isLeftOut)
            spec.extra_attribs.push_back(value);
    }
    if (!header.colourSpace.empty())
        spec.attribute("oiio:ColorSpace", header.colourSpace);
    if (header.spec.find_attribute("Orientation") != nullptr)
        spec.attribute("Orientation", 1);
}

} // namespace pbhost
