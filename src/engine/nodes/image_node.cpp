#include "engine/nodes/image_node.h"

#include <algorithm>
#include <array>

#include "engine/graph/pb_graph.h"
#include "engine/pixels/channel_scale.h"
#include "engine/pixels/pixel_format.h"
#include "gpu/errors.h"

namespace {

// The part of an image that is inside the frame, along one axis, in pixels.
struct Span {
    std::int64_t skipped; // pixels of the image before the frame
    std::int64_t offset;  // position of the first visible pixel in the frame
    std::int64_t length;
};

// Larger than any image in memory, and small enough that sums of sizes do not overflow.
constexpr std::uint32_t largestSize = 1U << 24;

// Size of the staging area for 16-bit channels: 64 KB, small enough for any thread's stack.
constexpr std::int64_t stagingChannels = 1 << 15;

bool isSize(std::uint32_t pixels) {
    return pixels > 0 && pixels <= largestSize;
}

Span clip(std::int32_t origin, std::uint32_t length, std::uint32_t frameLength) {
    const std::int64_t skipped = std::max<std::int64_t>(0, -std::int64_t{origin});
    const std::int64_t offset = std::max<std::int64_t>(0, origin);
    return {skipped, offset, std::min(length - skipped, frameLength - offset)};
}

// The position of an image's pixels in the frame.
struct Placement {
    Placement(const ImageSlot& image, const FrameDescription& frame)
        : columns(clip(image.originX, std::min(image.width, image.rowPixels), frame.width)),
          rows(clip(image.originY, image.height, frame.height)),
          hasPixels(columns.length > 0 && rows.length > 0 && image.pixels != nullptr),
          coversFrame(hasPixels && columns.length == frame.width && rows.length == frame.height) {}

    Span columns;
    Span rows;
    bool hasPixels;
    bool coversFrame;
};

// A rectangle of the texture and the pixels for it.
struct Pixels {
    std::int64_t x;
    std::int64_t y;
    std::int64_t width;
    std::int64_t height;
    std::int64_t rowPixels;
    const void* first;
};

void send(const Pixels& pixels, GLenum format, GLenum type) {
    glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(pixels.rowPixels));
    glTexSubImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(pixels.x), static_cast<GLint>(pixels.y),
                    static_cast<GLsizei>(pixels.width), static_cast<GLsizei>(pixels.height), format,
                    type, pixels.first);
}

// Sends a few rows at a time, or a part of a long row, through a staging area on the stack that
// fits the cache. Allocates nothing, because a frame must not fail halfway.
void sendDoubled(const Pixels& pixels, const ChannelFormat& format) {
    std::array<std::uint16_t, stagingChannels> staging;
    const std::int64_t components = format.components;
    const std::int64_t tileWidth = std::min(pixels.width, stagingChannels / components);
    const std::int64_t tileHeight = stagingChannels / components / tileWidth;
    const auto* source = static_cast<const std::uint16_t*>(pixels.first);
    for (std::int64_t y = 0; y < pixels.height; y += tileHeight)
        for (std::int64_t x = 0; x < pixels.width; x += tileWidth) {
            const std::int64_t width = std::min(tileWidth, pixels.width - x);
            const std::int64_t height = std::min(tileHeight, pixels.height - y);
            for (std::int64_t row = 0; row < height; ++row)
                doubleChannels(source + ((y + row) * pixels.rowPixels + x) * components,
                               staging.data() + row * width * components,
                               static_cast<std::size_t>(width * components));
            send({pixels.x + x, pixels.y + y, width, height, width, staging.data()}, format.upload,
                 GL_UNSIGNED_SHORT);
        }
}

// Uploads into the bound texture.
void upload(const ImageSlot& image, const Placement& place) {
    const DepthFormat& depth = depthFormat(image.componentBytes);
    const ChannelFormat& format = channelFormat(image.channels);
    if (format.components != 4)
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const std::int64_t firstPixel = place.rows.skipped * image.rowPixels + place.columns.skipped;
    const Pixels pixels{place.columns.offset,
                        place.rows.offset,
                        place.columns.length,
                        place.rows.length,
                        image.rowPixels,
                        static_cast<const std::uint8_t*>(image.pixels) +
                            firstPixel * format.components * depth.componentBytes};
    if (depth.componentBytes == 2)
        sendDoubled(pixels, format);
    else
        send(pixels, format.upload, depth.type);
    TVM_CHECK_GL("the upload of an image");
}

} // namespace

ImageNode::ImageNode(pbGraph& owner, std::string_view imageName)
    : NodeBase(owner, imageName), target_(RenderTexture::create()) {}

const ImageSlot* ImageNode::findImage(const FrameDescription& frame) const {
    for (const ImageSlot& image : frame.images) {
        const bool isOurs = image.imageIndex == slot && image.imageIndex >= 0;
        const bool hasFormat = image.componentBytes != 0 && image.channels != 0;
        if (isOurs && hasFormat && isSize(image.width) && isSize(image.height) &&
            isSize(image.rowPixels))
            return &image;
    }
    return nullptr;
}

void ImageNode::render(const FrameDescription& frame) {
    if (done)
        return;
    const ImageSlot* image = findImage(frame);
    const ImageSlot& format = image != nullptr ? *image : frame;
    graph->provideStorage(target_, frame, format.componentBytes,
                          channelFormat(format.channels).upload);
    const Placement place(image != nullptr ? *image : ImageSlot(), frame);
    if (!place.coversFrame)
        target_.clear();
    glBindTexture(GL_TEXTURE_2D, target_.texture.get());
    if (place.hasPixels)
        upload(*image, place);
    done = true;
}

void ImageNode::readBack(const FrameDescription& target) {
    const DepthFormat& depth = depthFormat(target.componentBytes);
    const GLenum format = channelFormat(target.channels).imageReadBack;
    // The texture has the frame's size, which may be larger than the output's: only as much is read
    // as the output can hold.
    const bool isHalved = depth.componentBytes == 2 && format == GL_ABGR_EXT;
    readFramebuffer(target_, {0, 0, target.width, target.height, target.rowPixels, format,
                              depth.type, target.pixels, isHalved ? 4U : 0U});
}

void ImageNode::reset() {
    graph->releaseStorage(target_);
    done = false;
    readsDone = 0;
}

PixelSize ImageNode::pixelSize(const FrameDescription& frame) const {
    const ImageSlot* image = findImage(frame);
    return {image != nullptr ? image->pixelAspect : 1.0F, 1.0F};
}
