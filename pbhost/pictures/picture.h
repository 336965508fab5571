// Pictures in the host's memory layout, read and written by OpenImageIO. A picture owns its pixels
// and shares the header of the file that it comes from. The functions are thread-safe; they throw
// Failure with the file's name and the reason, and leave no partial results. The first call loads
// the library of the formats, and throws Failure (RenderFailed) without it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pbhost {

class TemporaryFile;

// Bits per channel. White is 255, 32768 (not 65535) and 1.0; 32 bits are IEEE floats.
enum class Depth { Bits8, Bits16, Bits32 };

inline constexpr unsigned channelsPerPixel = 4; // in memory order: alpha, red, green, blue

constexpr unsigned componentBytesOf(Depth depth) {
    return depth == Depth::Bits8 ? 1 : depth == Depth::Bits16 ? 2 : 4;
}
constexpr unsigned bytesPerPixel(Depth depth) {
    return channelsPerPixel * componentBytesOf(depth);
}

// The depth for 8, 16 or 32 bits per channel; nothing for any other number.
constexpr std::optional<Depth> depthOfBits(int bits) {
    return bits == 8    ? std::optional(Depth::Bits8)
           : bits == 16 ? std::optional(Depth::Bits16)
           : bits == 32 ? std::optional(Depth::Bits32)
                        : std::nullopt;
}

// How a file stores a channel.
enum class ValueType { UInt8, UInt16, Half, Float };

// The depth of pixels that holds every value of the type.
constexpr Depth depthOf(ValueType type) {
    return type == ValueType::UInt8    ? Depth::Bits8
           : type == ValueType::UInt16 ? Depth::Bits16
                                       : Depth::Bits32;
}

// Whether red, green and blue are multiplied by alpha.
enum class Alpha { Straight, Premultiplied };

// A rectangle in the file's pixel coordinates.
struct Window {
    std::int64_t x = 0, y = 0, width = 0, height = 0;

    bool operator==(const Window&) const = default;
};

// What a file states about its pixels, after its orientation was applied. The library of the
// formats keeps the metadata in a derived class.
struct PictureHeader {
    virtual ~PictureHeader() = default;

    std::string format; // OpenImageIO's name of it
    ValueType type = ValueType::UInt8;
    Alpha alpha = Alpha::Straight; // of the file
    bool hasAlpha = false;
    bool isGrey = false;
    std::string colourSpace; // as the file states it; may be empty
    Window data;             // the pixels that the file has
    Window display;          // the area that is shown; differs only in OpenEXR
    std::optional<double> framesPerSecond;
    std::string leftOut; // the channels and images that were not read; may be empty
};

struct Picture {
    unsigned width = 0;  // pixels
    unsigned height = 0; // pixels, row 0 is the topmost
    Depth depth = Depth::Bits8;
    unsigned rowBytes = 0;         // distance between rows, at least a row's pixels
    std::vector<std::byte> pixels; // pixels of 32 bits are aligned to 16 bytes if the rows are
    std::shared_ptr<const PictureHeader> header{}; // null: not from a file

    std::byte* row(unsigned y) { return pixels.data() + std::size_t{rowBytes} * y; }
    const std::byte* row(unsigned y) const { return pixels.data() + std::size_t{rowBytes} * y; }
};

// A picture of transparent black without row padding. Throws Failure (Usage) for an empty size or
// more than 2 GiB.
Picture makePicture(unsigned width, unsigned height, Depth depth);

// Conversion between the colour spaces of files and one for the work.
struct Colours {
    std::string workSpace;     // empty: no conversion
    std::string configuration; // file of an OpenColorIO configuration; empty: $OCIO, or none
};

struct ReadOptions {
    std::optional<Depth> depth = std::nullopt; // default: the one that holds the file's values
    std::optional<Alpha> alpha = std::nullopt; // default: as in the file
    std::string channels = {}; // prefix of the channels' names in a file with layers
    Colours colours = {};
    // Reads the pixels of this header's data window if both files have the same display window.
    std::shared_ptr<const PictureHeader> beside = nullptr;
};

// Reads any format of OpenImageIO; the data window of the first image of a file, in which
// `channels` are. Grey becomes equal red, green and blue; a file without alpha is opaque. The rows
// are not padded. Throws Failure (BadPicture); Usage for unknown colour spaces.
Picture readPicture(const std::filesystem::path& path, const ReadOptions& options = {});

struct WriteOptions {
    std::optional<Alpha> alpha = std::nullopt;    // of the pixels; default: as the format has it
    std::optional<ValueType> type = std::nullopt; // default: that of the picture's header if it has
                                                  // the same depth, otherwise by the depth
    std::string compression = {};                 // default: the header's if the format is the same
    std::optional<int> quality = std::nullopt;
    Colours colours = {};
    bool keepsExisting = false; // fail if the file exists
};

// Throw Failure if writePicture could not write any picture there: RenderFailed because the folder
// is not writable, the path is no regular file or no format has the extension, Usage because the
// format does not have what the options ask for, or because the file exists and is to be kept.
void requirePlace(const std::filesystem::path& path);
void requireFormat(const std::filesystem::path& path, const WriteOptions& options = {});
void requireAbsence(const std::filesystem::path& path);

// A complete file beside its target, to be put in its place; otherwise it is removed.
class PendingPicture {
public:
    PendingPicture(std::filesystem::path path, bool keepsExisting);
    ~PendingPicture();
    PendingPicture(PendingPicture&&) noexcept;
    PendingPicture& operator=(PendingPicture&&) noexcept;

    // Atomically replaces the target. Throws Failure (RenderFailed).
    void publish();

    const std::filesystem::path& file() const; // where the picture is until then
    bool isAlphaDropped = false; // the picture is not opaque, but the format has no alpha

private:
    std::filesystem::path target_;
    bool keepsExisting_;
    std::unique_ptr<TemporaryFile> temporary_;
};

// Encodes the picture in the format of the path's extension, with the metadata, windows and colour
// space of its header. Grey stays grey and a picture without alpha stays so if its header was and
// the pixels are. Throws Failure (RenderFailed).
PendingPicture encodePicture(const std::filesystem::path& path, const Picture& picture,
                             const WriteOptions& options = {});

// The same, and publishes it: on failure an existing file is unchanged. Returns whether alpha was
// dropped.
bool writePicture(const std::filesystem::path& path, const Picture& picture,
                  const WriteOptions& options = {});

// Lets the library use that many threads for one file; 0: as many as there are processor cores.
void setThreadsPerFile(int threads);

} // namespace pbhost
