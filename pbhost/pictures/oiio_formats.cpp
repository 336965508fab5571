// Reads and writes pictures with OpenImageIO. This file is a separate library, loaded only when a
// picture is read or written, because OpenImageIO depends on hundreds of libraries.
#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "pbhost/pictures/picture_formats.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

// Representation of a channel in the host's memory, and its conversion to and from the file's.
template<typename Value, Value full>
struct SameInFile {
    using Type = Value;
    static constexpr Type white = full;
    static Type toHost(Type value) { return value; }
    static Type toFile(Type value) { return value; }
};
using Channel8 = SameInFile<std::uint8_t, 255>;
// Floats are copied as bit patterns, so that NaNs are preserved.
using Channel32 = SameInFile<std::uint32_t, std::bit_cast<std::uint32_t>(1.0f)>;
struct Channel16 {
    using Type = std::uint16_t;
    static constexpr Type white = 32768;
    static Type toHost(Type value) { return Type((value * 32768u + 32767u) / 65535u); }
    static Type toFile(Type value) {
        return Type((std::min(value, white) * 65535u + 16384u) / 32768u);
    }
};

template<typename Work>
void withChannel(Depth depth, Work work) {
    switch (depth) {
    case Depth::Bits8:
        return work(Channel8{});
    case Depth::Bits16:
        return work(Channel16{});
    case Depth::Bits32:
        return work(Channel32{});
    }
}

OIIO::TypeDesc bufferType(Depth depth) {
    return depth == Depth::Bits8    ? OIIO::TypeDesc::UINT8
           : depth == Depth::Bits16 ? OIIO::TypeDesc::UINT16
                                    : OIIO::TypeDesc::FLOAT;
}

// The file's channels that form a pixel; alpha is -1 if there is none.
struct Selection {
    int red, green, blue, alpha;

    int first() const {
        const int lowest = std::min({red, green, blue});
        return alpha < 0 ? lowest : std::min(lowest, alpha);
    }
    int end() const { return std::max({red, green, blue, alpha}) + 1; }
    int count() const { return end() - first(); }
};

// Index of the channel, or -1. Damaged files may have fewer names than channels.
int channelNamed(const OIIO::ImageSpec& spec, std::string_view name) {
    const auto& names = spec.channelnames;
    const auto found = std::find(names.begin(), names.end(), name);
    const auto index = int(found - names.begin());
    return found == names.end() || index >= spec.nchannels ? -1 : index;
}

Selection selectChannels(const OIIO::ImageSpec& spec) {
    const int red = channelNamed(spec, "R");
    const int green = channelNamed(spec, "G");
    const int blue = channelNamed(spec, "B");
    const int named = channelNamed(spec, "A");
    const int alpha = named >= 0                            ? named
                      : spec.alpha_channel < spec.nchannels ? spec.alpha_channel
                                                            : -1;
    if (red >= 0 && green >= 0 && blue >= 0)
        return {red, green, blue, alpha};
    const int luminance = channelNamed(spec, "Y");
    if (spec.nchannels <= 2 || luminance >= 0) {
        const int grey = std::max(luminance, 0);
        const int other = spec.nchannels == 2 ? 1 - grey : -1;
        return {grey, grey, grey, alpha >= 0 && alpha != grey ? alpha : other};
    }
    return {0, 1, 2, spec.nchannels > 3 ? 3 : -1};
}

Depth depthOfFile(const OIIO::TypeDesc& type) {
    if (type.is_floating_point())
        return Depth::Bits32;
    return type.size() == 1 ? Depth::Bits8 : Depth::Bits16;
}

// A rectangle in the file's pixel coordinates.
struct Window {
    std::int64_t x, y, width, height;
};

// Only OpenEXR uses the display window for the position of pixels. Offsets in other formats are for
// page layout and are ignored.
Window displayWindow(const OIIO::ImageSpec& spec, std::string_view format) {
    if (format == "openexr" && spec.full_width > 0 && spec.full_height > 0)
        return {spec.full_x, spec.full_y, spec.full_width, spec.full_height};
    return {spec.x, spec.y, spec.width, spec.height};
}

// Fetches and clears OpenImageIO's last error; errors that are not fetched are printed to standard
// error.
std::string reasonOf(const std::string& reason) {
    const std::size_t last = reason.find_last_not_of("\r\n ");
    return last == std::string::npos ? "the file is damaged or has an unsupported format"
                                     : reason.substr(0, last + 1);
}

// Copies the selected channels, which are adjacent in `pixels`, to the picture. Pixels outside the
// display window are skipped.
template<typename ChannelOf>
void placePixels(ChannelOf, const typename ChannelOf::Type* source, const Selection& selection,
                 const Window& data, const Window& display, Picture& picture) {
    using Type = typename ChannelOf::Type;
    const int base = selection.first(), channels = selection.count();
    const std::int64_t left = std::max(data.x, display.x);
    const std::int64_t right = std::min(data.x + data.width, display.x + display.width);
    const std::int64_t top = std::max(data.y, display.y);
    const std::int64_t bottom = std::min(data.y + data.height, display.y + display.height);
    const int red = selection.red - base, green = selection.green - base;
    const int blue = selection.blue - base, alpha = selection.alpha - base;
    const bool isOpaque = selection.alpha < 0;
    if (left >= right)
        return;
    for (std::int64_t y = top; y < bottom; ++y) {
        const Type* from = source + ((y - data.y) * data.width + (left - data.x)) * channels;
        auto* to = reinterpret_cast<Type*>(picture.row(unsigned(y - display.y))) +
                   (left - display.x) * channelsPerPixel;
        for (std::int64_t x = left; x < right; ++x, from += channels, to += channelsPerPixel) {
            to[0] = isOpaque ? ChannelOf::white : ChannelOf::toHost(from[alpha]);
            to[1] = ChannelOf::toHost(from[red]);
            to[2] = ChannelOf::toHost(from[green]);
            to[3] = ChannelOf::toHost(from[blue]);
        }
    }
}

// Rows that are read or written at once: enough for the library's threads, few enough that the
// memory for them is small beside the picture. A multiple of the rows that formats compress
// together.
constexpr int rowsAtOnce = 256;

bool readRows(OIIO::ImageInput& input, const Selection& selection, const Window& rows,
              OIIO::TypeDesc type, void* target) {
    const int left = int(rows.x), right = int(rows.x + rows.width);
    const int top = int(rows.y), bottom = int(rows.y + rows.height);
    const OIIO::ImageSpec& spec = input.spec();
    // Where nothing is converted, the library would still copy the rows of this format.
    const bool isDirect = input.format_name() == std::string_view("openexr") &&
                          spec.format == type && spec.channelformats.empty();
    const int first = selection.first(), end = selection.end();
    bool isRead = false;
    if (spec.tile_width > 0)
        isRead = input.read_tiles(0, 0, left, right, top, bottom, 0, 1, first, end, type, target);
    else if (isDirect)
        isRead = input.read_native_scanlines(0, 0, top, bottom, 0, first, end, target);
    else
        isRead = input.read_scanlines(0, 0, top, bottom, 0, first, end, type, target);
    // Some readers fill in what is missing and only report an error.
    return isRead && !input.has_error();
}

// Returns the reason of a failure, or an empty text.
template<typename ChannelOf>
std::string readPixels(ChannelOf channel, OIIO::ImageInput& input, const Selection& selection,
                       const Window& data, const Window& display, Picture& picture) {
    const std::int64_t tile = std::max(input.spec().tile_height, 1);
    const std::int64_t step = std::min((rowsAtOnce + tile - 1) / tile * tile, data.height);
    const auto source = std::make_unique_for_overwrite<typename ChannelOf::Type[]>(
        std::size_t(data.width) * std::size_t(step) * std::size_t(selection.count()));
    for (std::int64_t done = 0; done < data.height; done += step) {
        const Window rows{data.x, data.y + done, data.width, std::min(step, data.height - done)};
        if (!readRows(input, selection, rows, bufferType(picture.depth), source.get()))
            return reasonOf(input.geterror());
        placePixels(channel, source.get(), selection, rows, display, picture);
    }
    return {};
}

// Formats whose pixels are floats with any value; the others store integers.
constexpr std::array<std::string_view, 6> floatFormats = {"openexr", "tiff", "dpx",
                                                          "fits",    "rla",  "hdr"};
// Formats without unsigned 16-bit integers: floats lose less than the integers that they support.
constexpr std::array<std::string_view, 3> noInteger16 = {"openexr", "fits", "hdr"};

bool isIn(const auto& formats, std::string_view format) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

OIIO::TypeDesc fileType(Depth depth, std::string_view format) {
    const bool wantsFloat = depth == Depth::Bits32
                                ? isIn(floatFormats, format)
                                : depth == Depth::Bits16 && isIn(noInteger16, format);
    if (wantsFloat)
        return OIIO::TypeDesc::FLOAT;
    return depth == Depth::Bits8 ? OIIO::TypeDesc::UINT8 : OIIO::TypeDesc::UINT16;
}

// The channels of the rows from `top` to before `bottom`, side by side as the file has them.
template<typename ChannelOf>
void takePixels(ChannelOf, const Picture& picture, unsigned top, unsigned bottom, unsigned channels,
                std::byte* target) {
    using Type = typename ChannelOf::Type;
    constexpr std::array<unsigned, 4> hostIndex = {1, 2, 3, 0};
    for (unsigned y = top; y < bottom; ++y) {
        const std::byte* from = picture.row(y);
        for (unsigned x = 0; x < picture.width; ++x, from += channelsPerPixel * sizeof(Type)) {
            // Rows may have any length, so a channel may have any alignment.
            std::array<Type, channelsPerPixel> pixel;
            std::memcpy(pixel.data(), from, sizeof pixel);
            for (unsigned c = 0; c < channels; ++c, target += sizeof(Type)) {
                const Type value = ChannelOf::toFile(pixel[hostIndex[c]]);
                std::memcpy(target, &value, sizeof value);
            }
        }
    }
}

bool writePixels(OIIO::ImageOutput& output, const Picture& picture, unsigned channels) {
    const auto bytes = std::make_unique_for_overwrite<std::byte[]>(
        std::size_t{picture.width} * std::min<std::size_t>(rowsAtOnce, picture.height) * channels *
        componentBytesOf(picture.depth));
    for (unsigned top = 0; top < picture.height; top += rowsAtOnce) {
        const unsigned bottom = std::min(top + rowsAtOnce, picture.height);
        withChannel(picture.depth, [&](auto channel) {
            takePixels(channel, picture, top, bottom, channels, bytes.get());
        });
        if (!output.write_scanlines(int(top), int(bottom), 0, bufferType(picture.depth),
                                    bytes.get()))
            return false;
    }
    return true;
}

// Returns the reason of a failure, or an empty text.
std::string encode(const std::string& name, OIIO::ImageOutput& output, const Picture& picture) {
    const unsigned channels = output.supports("alpha") ? 4 : 3;
    OIIO::ImageSpec spec(int(picture.width), int(picture.height), int(channels),
                         fileType(picture.depth, output.format_name()));
    spec.attribute("oiio:UnassociatedAlpha", 1);
    if (output.format_name() == std::string_view("webp"))
        spec.attribute("Compression", "lossless");
    std::string reason;
    if (!output.open(name, spec) || !writePixels(output, picture, channels))
        reason = reasonOf(output.geterror());
    // Some formats write their pixels only when the file is closed.
    if (!output.close()) {
        const std::string late = reasonOf(output.geterror());
        if (reason.empty())
            reason = late;
    }
    return reason;
}

std::string readFile(const fs::path& path, std::optional<Depth> wanted, Picture& picture) {
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    const auto input = OIIO::ImageInput::open(path.string(), &config);
    if (!input)
        return reasonOf(OIIO::geterror());
    const OIIO::ImageSpec spec = input->spec();
    if (spec.deep || spec.depth > 1 || spec.nchannels < 1)
        return "deep pictures and volumes are not supported";

    const Selection selection = selectChannels(spec);
    const Depth depth = wanted.value_or(depthOfFile(spec.channelformat(selection.red)));
    const Window data{spec.x, spec.y, spec.width, spec.height};
    const Window display = displayWindow(spec, input->format_name());
    const std::uint64_t channels = std::max(unsigned(selection.count()), channelsPerPixel);
    for (const Window& window : {data, display})
        if (const std::string fault =
                sizeFault(window.width, window.height, channels * componentBytesOf(depth));
            !fault.empty())
            return fault;
    picture = emptyPicture(unsigned(display.width), unsigned(display.height), depth);
    std::string reason;
    withChannel(depth, [&](auto channel) {
        reason = readPixels(channel, *input, selection, data, display, picture);
    });
    return reason;
}

std::string writeBytes(const fs::path& path, const std::vector<unsigned char>& bytes) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                         std::fclose);
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        std::fclose(file.release()) != 0)
        return std::generic_category().message(errno);
    return {};
}

// Most writers do not detect a full disk, and one terminates the process. So the file is encoded in
// memory if the writer supports that, and otherwise read back after writing.
std::string writeFile(const fs::path& path, OIIO::ImageOutput& output, const Picture& picture) {
    if (output.supports("ioproxy")) {
        OIIO::Filesystem::IOVecOutput memory;
        output.set_ioproxy(&memory);
        const std::string reason = encode(path.string(), output, picture);
        output.set_ioproxy(nullptr);
        return reason.empty() ? writeBytes(path, memory.buffer()) : reason;
    }
    std::string reason = encode(path.string(), output, picture);
    if (reason.empty()) {
        Picture again;
        if (const std::string damage = readFile(path, std::nullopt, again); !damage.empty())
            reason = "the written file is damaged: " + damage;
    }
    return reason;
}

std::unique_ptr<OIIO::ImageOutput> createWriter(const std::string& extension) {
    // The base name is needed: OpenImageIO would not take the leading dot of a file name as the
    // start of an extension.
    auto writer = OIIO::ImageOutput::create("name" + extension);
    if (!writer)
        OIIO::geterror(); // clears the error, which would otherwise be printed at exit
    return writer;
}

class OiioFormats : public PictureFormats {
    std::string read(const fs::path& path, std::optional<Depth> depth,
                     Picture& picture) const override {
        return readFile(path, depth, picture);
    }

    bool canWrite(const std::string& extension) const override {
        return createWriter(extension) != nullptr;
    }

    std::string write(const fs::path& path, const Picture& picture) const override {
        const auto writer = createWriter(path.extension().string());
        return writer ? writeFile(path, *writer, picture) : "no format has its extension";
    }
};

} // namespace

} // namespace pbhost

const pbhost::PictureFormats* pbhostPictureFormats() {
    static const pbhost::OiioFormats formats;
    return &formats;
}
