#include "engine/image_node.h"

#include <algorithm>

#include "engine/pixel_format.h"
#include "gpu/errors.h"

namespace {

// The stretch of an image, along one axis, that lies inside the frame. In pixels.
struct Span {
    std::int64_t skipped; // pixels of the image in front of the frame
    std::int64_t offset;  // where the first visible pixel lies in the frame
    std::int64_t length;
};

// Far above what any host has in memory, and safe to reckon with.
constexpr std::uint32_t largestSize = 1U << 24;

bool isSize(std::uint32_t pixels) {
    return pixels > 0 && pixels <= largestSize;
}

Span clip(std::int32_t origin, std::uint32_t length, std::uint32_t frameLength) {
    const std::int64_t skipped = std::max<std::int64_t>(0, -std::int64_t{origin});
    const std::int64_t offset = std::max<std::int64_t>(0, origin);
    return {skipped, offset, std::min(length - skipped, frameLength - offset)};
}

void upload(const ImageSlot& image, const FrameDescription& frame) {
    const DepthFormat& depth = depthFormat(image.componentBytes);
    const ChannelFormat& format = channelFormat(image.channels);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(image.rowPixels));
    if (format.components != 4)
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const Span columns = clip(image.originX, std::min(image.width, image.rowPixels), frame.width);
    const Span rows = clip(image.originY, image.height, frame.height);
    if (columns.length <= 0 || rows.length <= 0 || image.pixels == nullptr)
        return;
    const std::int64_t firstPixel = rows.skipped * image.rowPixels + columns.skipped;
    const auto* pixels = static_cast<const std::uint8_t*>(image.pixels) +
                         firstPixel * format.components * depth.componentBytes;
    const ChannelScale scale(depth.componentBytes == 2 ? 2.0F : 1.0F);
    glTexSubImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(columns.offset),
                    static_cast<GLint>(rows.offset), static_cast<GLsizei>(columns.length),
                    static_cast<GLsizei>(rows.length), format.upload, depth.type, pixels);
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
    target_.setStorage(frame.width, frame.height, format.componentBytes,
                       channelFormat(format.channels).upload);
    target_.clear();
    if (image != nullptr)
        upload(*image, frame);
    done = true;
}

void ImageNode::readBack(const FrameDescription& target) {
    const DepthFormat& depth = depthFormat(target.componentBytes);
    const GLenum format = channelFormat(target.channels).imageReadBack;
    // The texture has the frame's size, which may be larger than the output: only as much is read
    // as the output can hold.
    readFramebuffer(target_.framebuffer,
                    {0, 0, target.width, target.height, target.rowPixels, format, depth.type,
                     target.pixels, depth.componentBytes == 2 && format == GL_ABGR_EXT});
}

void ImageNode::reset() {
    target_.clear();
    target_.shrink();
    done = false;
}

PixelSize ImageNode::pixelSize(const FrameDescription& frame) const {
    const ImageSlot* image = findImage(frame);
    return {image != nullptr ? image->pixelAspect : 1.0F, 1.0F};
}
