#include "pbhost/pictures/oiio/writing.h"

#include <sys/mman.h>
#include <unistd.h>

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <system_error>

#include "pbhost/pictures/oiio/conversion.h"
#include "pbhost/pictures/oiio/format_abilities.h"
#include "pbhost/pictures/oiio/header.h"
#include "pbhost/pictures/oiio/host_channels.h"
#include "pbhost/pictures/oiio/reading.h"
#include "pbhost/pictures/oiio/rows_at_once.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

// The channels of a file, as indices of red, green, blue, alpha: all, without alpha, or grey.
struct StoredChannels {
    std::array<unsigned, 4> index = {0, 1, 2, 3};
    int count = 4;
};

StoredChannels channelsFor(bool isGrey, bool hasAlpha) {
    if (isGrey)
        return {{0, 3}, hasAlpha ? 2 : 1};
    return {{0, 1, 2, 3}, hasAlpha ? 4 : 3};
}

// The channels `target` of the rows from `top` to before `bottom`, side by side.
template<typename ChannelOf>
void takePixels(ChannelOf, const Picture& picture, unsigned top, unsigned bottom,
                const StoredChannels& channels, std::byte* target) {
    using Type = typename ChannelOf::Type;
    constexpr std::array<unsigned, 4> hostIndex = {1, 2, 3, 0};
    std::array<unsigned, 4> from{};
    for (unsigned c = 0; c < 4; ++c)
        from[c] = hostIndex[channels.index[c]];
    for (unsigned y = top; y < bottom; ++y) {
        const std::byte* at = picture.row(y);
        for (unsigned x = 0; x < picture.width; ++x, at += channelsPerPixel * sizeof(Type)) {
            // Rows may have any length, so a channel may have any alignment.
            std::array<Type, channelsPerPixel> pixel;
            std::memcpy(pixel.data(), at, sizeof pixel);
            for (int c = 0; c < channels.count; ++c, target += sizeof(Type)) {
                const Type value = ChannelOf::toFile(pixel[from[std::size_t(c)]]);
                std::memcpy(target, &value, sizeof value);
            }
        }
    }
}

// The same as floats, converted.
void takeConverted(const Picture& picture, unsigned top, unsigned bottom,
                   const StoredChannels& channels, const PixelConversion& conversion,
                   std::vector<float>& rows, std::byte* target) {
    const std::size_t pixels = std::size_t{picture.width} * (bottom - top);
    rows.resize(pixels * channelsPerPixel);
    takeFloats(picture, top, bottom, rows.data());
    conversion.apply(rows.data(), pixels);
    auto* to = reinterpret_cast<float*>(target);
    for (std::size_t i = 0; i < pixels; ++i)
        for (int c = 0; c < channels.count; ++c)
            *to++ = rows[4 * i + channels.index[std::size_t(c)]];
}

bool writePixels(OIIO::ImageOutput& output, const Picture& picture, const StoredChannels& channels,
                 const PixelConversion& conversion) {
    const Depth depth = conversion.isNone() ? picture.depth : Depth::Bits32;
    const auto bytes = std::make_unique_for_overwrite<std::byte[]>(
        std::size_t{picture.width} * std::min<std::size_t>(rowsAtOnce, picture.height) *
        unsigned(channels.count) * componentBytesOf(depth));
    std::vector<float> rows;
    const int first = output.spec().y;
    for (unsigned top = 0; top < picture.height; top += rowsAtOnce) {
        const unsigned bottom = std::min(top + rowsAtOnce, picture.height);
        if (conversion.isNone())
            withChannel(depth, [&](auto channel) {
                takePixels(channel, picture, top, bottom, channels, bytes.get());
            });
        else
            takeConverted(picture, top, bottom, channels, conversion, rows, bytes.get());
        if (!output.write_scanlines(first + int(top), first + int(bottom), 0, bufferType(depth),
                                    bytes.get()))
            return false;
    }
    return true;
}

const OiioHeader* headerOf(const Picture& picture) {
    return dynamic_cast<const OiioHeader*>(picture.header.get());
}

// The window after a change of the resolution.
Window scaled(const Window& window, double across, double down) {
    const auto lower = [](std::int64_t at, double by) {
        return std::int64_t(std::floor(double(at) * by));
    };
    const auto upper = [](std::int64_t length, double by) {
        return std::int64_t(std::ceil(double(length) * by - 1e-6));
    };
    return {lower(window.x, across), lower(window.y, down), upper(window.width, across),
            upper(window.height, down)};
}

void setWindows(const OiioHeader& header, const Picture& picture, OIIO::ImageSpec& spec) {
    const double across = double(picture.width) / double(header.data.width);
    const double down = double(picture.height) / double(header.data.height);
    const Window data = scaled(header.data, across, down);
    const Window display = scaled(header.display, across, down);
    spec.x = int(data.x);
    spec.y = int(data.y);
    spec.full_x = int(display.x);
    spec.full_y = int(display.y);
    spec.full_width = int(display.width);
    spec.full_height = int(display.height);
}

// The picture with the pixels of the display window; formats without windows would lose their
// place.
Picture displayed(const Picture& picture, const OiioHeader& header) {
    const double across = double(picture.width) / double(header.data.width);
    const double down = double(picture.height) / double(header.data.height);
    const Window data = scaled(header.data, across, down);
    const Window display = scaled(header.display, across, down);
    Picture result =
        header.hasAlpha
            ? emptyPicture(unsigned(display.width), unsigned(display.height), picture.depth)
            : opaqueBlack(unsigned(display.width), unsigned(display.height), picture.depth);
    const std::int64_t left = std::max(data.x, display.x);
    const std::int64_t right =
        std::min(data.x + std::int64_t{picture.width}, display.x + display.width);
    const std::size_t bytes = bytesPerPixel(picture.depth);
    for (std::int64_t y = std::max(data.y, display.y);
         left < right &&
         y < std::min(data.y + std::int64_t{picture.height}, display.y + display.height);
         ++y)
        std::memcpy(result.row(unsigned(y - display.y)) + std::size_t(left - display.x) * bytes,
                    picture.row(unsigned(y - data.y)) + std::size_t(left - data.x) * bytes,
                    std::size_t(right - left) * bytes);
    result.header = picture.header;
    return result;
}

// OpenImageIO writes no colour space into OpenEXR files, but believes one that is there, and says
// "Linear" otherwise. So the attribute is written with a name of the same length, and renamed in
// the encoded file.
constexpr std::string_view exrSpaceWritten = "tvm_:ColorSpace";
constexpr std::string_view exrSpaceRead = "oiio:ColorSpace";

void renameColourSpace(std::vector<unsigned char>& file) {
    const std::string_view name(exrSpaceWritten.data(), exrSpaceWritten.size() + 1); // with the 0
    const auto found = std::search(file.begin(), file.end(), name.begin(), name.end());
    if (found != file.end())
        std::copy(exrSpaceRead.begin(), exrSpaceRead.end(), found);
}

// One picture on its way to a file.
class Encoder {
public:
    Encoder(OIIO::ImageOutput& output, const Picture& picture, const WriteOptions& options)
        : output_(output), picture_(picture), options_(options), header_(headerOf(picture)),
          format_(output.format_name()) {}

    Fault run(const std::string& name) {
        const bool isOpaque = isAllOpaque(picture_);
        const PictureHeader* const header = picture_.header.get(); // also of a video
        const bool wasOpaque = header != nullptr && !header->hasAlpha;
        const bool hasAlpha = output_.supports("alpha") && !(wasOpaque && isOpaque);
        const bool isGrey = header_ != nullptr && header_->isGrey && isAllGrey(picture_);
        isAlphaDropped = !hasAlpha && !isOpaque;
        PixelConversion conversion = alphaConversion(hasAlpha);
        if (const Fault fault = setColours(conversion); !fault.isNone())
            return fault;
        // Some formats have no grey.
        if (isGrey && tryOpen(name, channelsFor(true, hasAlpha)))
            return finish(channelsFor(true, hasAlpha), conversion);
        if (!tryOpen(name, channelsFor(false, hasAlpha)))
            return {reasonOf(output_.geterror())};
        return finish(channelsFor(false, hasAlpha), conversion);
    }

    // TIFF reads its file again when it has a directory of Exif data, which the library's memory
    // for writing can't.
    bool needsFile() const {
        if (format_ != "tiff" || header_ == nullptr)
            return false;
        const auto& all = header_->spec.extra_attribs;
        // The colour space is stored there, too.
        return !header_->colourSpace.empty() ||
               std::any_of(all.begin(), all.end(), [](const OIIO::ParamValue& value) {
                   return value.name().string().starts_with("Exif:") ||
                          value.name().string().starts_with("GPS:");
               });
    }

    bool isAlphaDropped = false;

private:
    // The convention in which the format stores the pixels.
    Alpha storedAlpha() const {
        return alphaOfFormat(format_).value_or(options_.alpha.value_or(Alpha::Straight));
    }

    PixelConversion alphaConversion(bool hasAlpha) const {
        const Alpha stored = storedAlpha();
        return {hasAlpha ? options_.alpha.value_or(stored) : stored, stored};
    }

    Fault setColours(PixelConversion& conversion) const {
        if (options_.colours.workSpace.empty())
            return {};
        const std::string space =
            header_ == nullptr
                ? assumedSpace("", picture_.depth == Depth::Bits32 ? ValueType::Float
                                                                   : ValueType::UInt8)
                : assumedSpace(header_->colourSpace, header_->type);
        return conversion.setColours(options_.colours.workSpace, space,
                                     options_.colours.configuration);
    }

    bool tryOpen(const std::string& name, const StoredChannels& channels) {
        const OIIO::TypeDesc type =
            options_.type ? typeDescOf(*options_.type) : storedType(picture_, format_);
        OIIO::ImageSpec spec(int(picture_.width), int(picture_.height), channels.count, type);
        if (channels.count < 3) {
            spec.channelnames = {format_ == "openexr" ? header_->greyChannel : "Y"};
            if (channels.count == 2)
                spec.channelnames.emplace_back("A");
            spec.alpha_channel = channels.count == 2 ? 1 : -1;
        }
        if (header_ != nullptr) {
            copyMetadata(*header_, format_, spec);
            if (format_ == "openexr") {
                setWindows(*header_, picture_, spec);
                if (!header_->colourSpace.empty() && header_->colourSpace != "Linear")
                    spec.attribute(std::string(exrSpaceWritten), header_->colourSpace);
            }
        }
        spec.attribute("oiio:UnassociatedAlpha", storedAlpha() == Alpha::Straight ? 1 : 0);
        setCompression(format_, options_, spec);
        if (options_.type)
            spec.erase_attribute("oiio:BitsPerSample");
        return output_.open(name, spec);
    }

    Fault finish(const StoredChannels& channels, const PixelConversion& conversion) {
        Fault fault;
        if (!writePixels(output_, picture_, channels, conversion))
            fault.reason = reasonOf(output_.geterror());
        // Some formats write their pixels only when the file is closed.
        if (!output_.close()) {
            const std::string late = reasonOf(output_.geterror());
            if (fault.isNone())
                fault.reason = late;
        }
        return fault;
    }

    OIIO::ImageOutput& output_;
    const Picture& picture_;
    const WriteOptions& options_;
    const OiioHeader* header_;
    const std::string format_;
};

// A file without a place on disk.
class MemoryFile {
public:
    MemoryFile() : descriptor_(::memfd_create("picture", MFD_CLOEXEC)) {}
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

    std::vector<unsigned char> bytes() const {
        std::vector<unsigned char> all(std::size_t(::lseek(descriptor_, 0, SEEK_END)));
        std::size_t done = 0;
        while (done < all.size()) {
            const ssize_t count = ::pread(descriptor_, &all[done], all.size() - done, off_t(done));
            if (count <= 0)
                break;
            done += std::size_t(count);
        }
        return all;
    }

private:
    const int descriptor_;
};

Fault writeBytes(const fs::path& path, const std::vector<unsigned char>& bytes) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                         std::fclose);
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        std::fclose(file.release()) != 0)
        return {std::generic_category().message(errno)};
    return {};
}

// Most writers do not detect a full disk, and one terminates the process. So the file is encoded in
// memory if the writer supports that, and otherwise read back after writing.
Fault writeWith(OIIO::ImageOutput& output, const fs::path& path, Encoder& encoder) {
    if (encoder.needsFile()) {
        const MemoryFile file;
        const Fault fault = encoder.run(file.path());
        return fault.isNone() ? writeBytes(path, file.bytes()) : fault;
    }
    if (output.supports("ioproxy")) {
        OIIO::Filesystem::IOVecOutput memory;
        output.set_ioproxy(&memory);
        const Fault fault = encoder.run(path.string());
        output.set_ioproxy(nullptr);
        if (!fault.isNone())
            return fault;
        std::vector<unsigned char>& bytes = memory.buffer();
        if (output.format_name() == std::string_view("openexr"))
            renameColourSpace(bytes);
        return writeBytes(path, bytes);
    }
    Fault fault = encoder.run(path.string());
    if (fault.isNone()) {
        Picture again;
        if (const Fault damage = readFile(path, {}, again); !damage.isNone())
            fault.reason = "the written file is damaged: " + damage.reason;
    }
    return fault;
}

std::unique_ptr<OIIO::ImageOutput> createWriter(const std::string& extension) {
    // The base name is needed: OpenImageIO would not take the leading dot of a file name as the
    // start of an extension.
    auto writer = OIIO::ImageOutput::create("name" + extension);
    if (!writer)
        OIIO::geterror(); // clears the error, which would otherwise be printed at exit
    return writer;
}

// Whether a file with pixels of that type can be opened; formats choose another if they lack it.
bool hasType(OIIO::ImageOutput& writer, const std::string& extension, ValueType type) {
    if (!writer.supports("ioproxy"))
        return typeDescOf(type) == OIIO::TypeDesc::UINT8;
    OIIO::Filesystem::IOVecOutput memory;
    writer.set_ioproxy(&memory);
    const bool isOpen =
        writer.open("name" + extension, OIIO::ImageSpec(16, 16, 3, typeDescOf(type)));
    const bool isKept = isOpen && writer.spec().format == typeDescOf(type);
    // Without pixels, some libraries print a message.
    const std::vector<float> pixels(16 * 16 * 3);
    if (isOpen)
        writer.write_image(OIIO::TypeDesc::FLOAT, pixels.data());
    writer.close();
    writer.geterror();
    writer.set_ioproxy(nullptr);
    return isKept;
}

} // namespace

Fault writeFile(const fs::path& path, const Picture& picture, const WriteOptions& options,
                bool& isAlphaDropped) {
    const auto writer = createWriter(path.extension().string());
    if (!writer)
        return {"no format has its extension"};
    const OiioHeader* header = headerOf(picture);
    const bool isPlaced = header != nullptr && header->data != header->display &&
                          writer->format_name() != std::string_view("openexr");
    const Picture placed = isPlaced ? displayed(picture, *header) : Picture();
    Encoder encoder(*writer, isPlaced ? placed : picture, options);
    const Fault fault = writeWith(*writer, path, encoder);
    isAlphaDropped = encoder.isAlphaDropped;
    return fault;
}

Fault formatFault(const std::string& extension, const WriteOptions& options) {
    const auto writer = createWriter(extension);
    if (!writer)
        return {"no picture format is known for the extension '" + extension + "'"};
    if (options.type && !hasType(*writer, extension, *options.type))
        return {"the format has no pixels of that type", true};
    return faultOfOptions(writer->format_name(), options);
}

} // namespace pbhost
