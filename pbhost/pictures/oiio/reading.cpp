#include "pbhost/pictures/oiio/reading.h"

#include <OpenImageIO/imageio.h>

#include <memory>
#include <stdexcept>
#include <string_view>

#include "pbhost/pictures/oiio/channel_selection.h"
#include "pbhost/pictures/oiio/conversion.h"
#include "pbhost/pictures/oiio/header.h"
#include "pbhost/pictures/oiio/host_channels.h"
#include "pbhost/pictures/oiio/rows_at_once.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

// Copies the selected channels, which are adjacent in `pixels`, to the picture. Pixels outside the
// picture's window are skipped.
template<typename ChannelOf>
void placePixels(ChannelOf, const typename ChannelOf::Type* source, const Selection& selection,
                 const Window& data, const Window& window, Picture& picture) {
    using Type = typename ChannelOf::Type;
    const int base = selection.first(), channels = selection.count();
    const std::int64_t left = std::max(data.x, window.x);
    const std::int64_t right = std::min(data.x + data.width, window.x + window.width);
    const std::int64_t top = std::max(data.y, window.y);
    const std::int64_t bottom = std::min(data.y + data.height, window.y + window.height);
    const int red = selection.red - base, green = selection.green - base;
    const int blue = selection.blue - base, alpha = selection.alpha - base;
    const bool isOpaque = selection.alpha < 0;
    if (left >= right)
        return;
    for (std::int64_t y = top; y < bottom; ++y) {
        const Type* from = source + ((y - data.y) * data.width + (left - data.x)) * channels;
        auto* to = reinterpret_cast<Type*>(picture.row(unsigned(y - window.y))) +
                   (left - window.x) * channelsPerPixel;
        for (std::int64_t x = left; x < right; ++x, from += channels, to += channelsPerPixel) {
            to[0] = isOpaque ? ChannelOf::white : ChannelOf::toHost(from[alpha]);
            to[1] = ChannelOf::toHost(from[red]);
            to[2] = ChannelOf::toHost(from[green]);
            to[3] = ChannelOf::toHost(from[blue]);
        }
    }
}

struct ReadError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A file with its image chosen. All functions throw ReadError.
class OpenFile {
public:
    OpenFile(const fs::path& path, const std::string& layer) {
        OIIO::ImageSpec config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        input_ = OIIO::ImageInput::open(path.string(), &config);
        if (!input_)
            throw ReadError(reasonOf(OIIO::geterror()));
        choose(layer);
        if (spec_.deep || spec_.depth > 1 || spec_.nchannels < 1)
            throw ReadError("deep pictures and volumes are not supported");
    }

    OiioHeader header() const {
        OiioHeader header = headerOf(spec_, input_->format_name(), selection_);
        header.leftOut = leftOut_;
        return header;
    }

    void readPixels(const Window& data, const Window& window, Picture& picture) {
        withChannel(picture.depth, [&](auto channel) { readAs(channel, data, window, picture); });
    }

    const Selection& selection() const { return selection_; }

private:
    void choose(const std::string& layer) {
        spec_ = input_->spec();
        selection_ = selectChannels(spec_);
        std::optional<Selection> chosen;
        std::string layers;
        // Some readers can't be used after the search for an image that does not exist.
        const int images = std::min(spec_.get_int_attribute("oiio:subimages", 1), mostImages);
        int index = 0;
        for (int i = 0; i < images && input_->seek_subimage(i, 0); ++i) {
            const OIIO::ImageSpec spec = input_->spec();
            layers += " " + layersOf(spec);
            if (!layer.empty() && !chosen && (chosen = selectLayer(spec, layer))) {
                spec_ = spec;
                index = i;
            }
        }
        if (!layer.empty() && !chosen)
            throw ReadError("there are no channels '" + layer + ".R' and so on; " +
                            (layers.find_first_not_of(' ') == std::string::npos
                                 ? "there are no layers"
                                 : "the layers are" + layers));
        if (chosen)
            selection_ = *chosen;
        if (!input_->seek_subimage(index, 0))
            throw ReadError(reasonOf(input_->geterror()));
        describeOthers(images);
    }

    void describeOthers(int images) {
        const std::string others = otherChannels(spec_, selection_);
        if (!others.empty())
            leftOut_ = "the channels " + others;
        if (images > 1)
            leftOut_ += (leftOut_.empty() ? "" : " and ") + std::string("the other images");
    }

    template<typename ChannelOf>
    void readAs(ChannelOf channel, const Window& data, const Window& window, Picture& picture) {
        const std::int64_t tile = std::max(spec_.tile_height, 1);
        const std::int64_t step = std::min((rowsAtOnce + tile - 1) / tile * tile, data.height);
        const auto source = std::make_unique_for_overwrite<typename ChannelOf::Type[]>(
            std::size_t(data.width) * std::size_t(step) * std::size_t(selection_.count()));
        for (std::int64_t done = 0; done < data.height; done += step) {
            const Window rows{data.x, data.y + done, data.width,
                              std::min(step, data.height - done)};
            readRows(rows, bufferType(picture.depth), source.get());
            placePixels(channel, source.get(), selection_, rows, window, picture);
        }
    }

    void readRows(const Window& rows, OIIO::TypeDesc type, void* target) {
        const int left = int(rows.x), right = int(rows.x + rows.width);
        const int top = int(rows.y), bottom = int(rows.y + rows.height);
        // Where nothing is converted, the library would still copy the rows of this format.
        const bool isDirect = input_->format_name() == std::string_view("openexr") &&
                              spec_.format == type && spec_.channelformats.empty();
        const int image = input_->current_subimage();
        const int first = selection_.first(), end = selection_.end();
        bool isRead = false;
        if (spec_.tile_width > 0)
            isRead = input_->read_tiles(image, 0, left, right, top, bottom, 0, 1, first, end, type,
                                        target);
        else if (isDirect)
            isRead = input_->read_native_scanlines(image, 0, top, bottom, 0, first, end, target);
        else
            isRead = input_->read_scanlines(image, 0, top, bottom, 0, first, end, type, target);
        // Some readers fill in what is missing and only report an error.
        if (!isRead || input_->has_error())
            throw ReadError(reasonOf(input_->geterror()));
    }

    static constexpr int mostImages = 64; // counted; more are left out all the same

    std::unique_ptr<OIIO::ImageInput> input_;
    OIIO::ImageSpec spec_;
    Selection selection_{};
    std::string leftOut_;
};

// The window of the picture: the file's own data window, or that of the other file.
Window windowFor(const OiioHeader& header, const ReadOptions& options) {
    const PictureHeader* other = options.beside.get();
    const bool isPlaced =
        other != nullptr && other->format == header.format && other->display == header.display;
    return isPlaced ? other->data : header.data;
}

void orient(OiioHeader& header, Picture& picture) {
    const int orientation = header.spec.get_int_attribute("Orientation", 1);
    if (orientation < 2 || orientation > 8)
        return;
    picture = oriented(picture, orientation);
    if (orientation < 5)
        return;
    for (Window* window : {&header.data, &header.display})
        *window = {window->y, window->x, window->height, window->width};
}

Fault convert(const OiioHeader& header, const ReadOptions& options, Depth depth, Picture& picture) {
    PixelConversion conversion(header.alpha, options.alpha.value_or(header.alpha));
    if (!options.colours.workSpace.empty())
        if (const Fault fault =
                conversion.setColours(assumedSpace(header.colourSpace, header.type),
                                      options.colours.workSpace, options.colours.configuration);
            !fault.isNone())
            return fault;
    convertPicture(picture, conversion);
    if (depth != Depth::Bits32)
        picture = toDepth(picture, depth);
    return {};
}

Fault readImage(const fs::path& path, const ReadOptions& options, Picture& picture) {
    OpenFile file(path, options.channels);
    OiioHeader header = file.header();
    const Depth depth = options.depth.value_or(depthOf(header.type));
    const bool isConverted =
        (header.hasAlpha && options.alpha.value_or(header.alpha) != header.alpha) ||
        !options.colours.workSpace.empty();
    const Depth read = isConverted ? Depth::Bits32 : depth;
    const Window window = windowFor(header, options);
    const std::uint64_t channels = std::max(unsigned(file.selection().count()), channelsPerPixel);
    for (const Window& each : {header.data, window})
        if (const std::string fault =
                sizeFault(each.width, each.height, channels * componentBytesOf(read));
            !fault.empty())
            return {fault};
    picture = emptyPicture(unsigned(window.width), unsigned(window.height), read);
    file.readPixels(header.data, window, picture);
    if (isConverted)
        if (const Fault fault = convert(header, options, depth, picture); !fault.isNone())
            return fault;
    orient(header, picture);
    picture.header = std::make_shared<OiioHeader>(std::move(header));
    return {};
}

} // namespace

std::string reasonOf(const std::string& message) {
    const std::size_t last = message.find_last_not_of("\r\n ");
    return last == std::string::npos ? "the file is damaged or has an unsupported format"
                                     : message.substr(0, last + 1);
}

Fault readFile(const fs::path& path, const ReadOptions& options, Picture& picture) {
    try {
        return readImage(path, options, picture);
    } catch (const ReadError& error) {
        return {error.what()};
    }
}

} // namespace pbhost
