#include "tests/support/engine_fixture.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "engine/pixels/channel_order.h"
#include "gpu/features.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"
#include "support/report.h"
#include "tests/support/strict_gl.h"

namespace {

constexpr std::byte guardByte{0xA5};
constexpr int paddingPixels = 3;

std::array<std::string, 3> messages;

float white(std::size_t componentBytes) {
    return componentBytes == 1 ? 255.0F : componentBytes == 2 ? 32768.0F : 1.0F;
}

// Indices of red, green, blue and alpha in a host pixel.
constexpr std::array<std::size_t, 4> channelPlaces = {1, 2, 3, 0};

std::size_t offset(const hostkit::World& world, int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(world.rowBytes) +
           static_cast<std::size_t>(x) * static_cast<std::size_t>(world.pixelBytes());
}

} // namespace

Pixel pixelAt(const hostkit::World& world, int x, int y) {
    const auto bytes = static_cast<std::size_t>(world.componentBytes);
    Pixel pixel{};
    for (std::size_t k = 0; k < 4; ++k) {
        const std::byte* channel = &world.data.at(offset(world, x, y)) + channelPlaces[k] * bytes;
        std::uint32_t whole = 0; // little-endian
        std::memcpy(bytes == 4 ? static_cast<void*>(&pixel[k]) : &whole, channel, bytes);
        if (bytes != 4)
            pixel[k] = static_cast<float>(whole) / white(bytes);
    }
    return pixel;
}

void setPixel(hostkit::World& world, int x, int y, const Pixel& pixel) {
    const auto bytes = static_cast<std::size_t>(world.componentBytes);
    for (std::size_t k = 0; k < 4; ++k) {
        const auto whole =
            static_cast<std::uint32_t>(bytes == 4 ? 0 : std::lround(pixel[k] * white(bytes)));
        std::memcpy(&world.data.at(offset(world, x, y)) + channelPlaces[k] * bytes,
                    bytes == 4 ? static_cast<const void*>(&pixel[k]) : &whole, bytes);
    }
}

HostImage::HostImage(unsigned imageWidth, unsigned imageHeight, unsigned imageComponentBytes)
    : width(imageWidth), height(imageHeight), componentBytes(imageComponentBytes),
      world_(hostkit::makeWorld(int(imageWidth), int(imageHeight), int(imageComponentBytes),
                                paddingPixels)) {
    std::ranges::fill(world_.data, guardByte);
}

HostImage::HostImage(unsigned imageWidth, unsigned imageHeight, unsigned imageComponentBytes,
                     const std::function<Pixel(unsigned x, unsigned y)>& paint)
    : HostImage(imageWidth, imageHeight, imageComponentBytes) {
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            set(x, y, paint(x, y));
}

ImageSlot HostImage::slot(std::int32_t imageIndex, std::int32_t originX, std::int32_t originY) {
    ImageSlot slot;
    slot.imageIndex = imageIndex;
    slot.componentBytes = componentBytes;
    slot.channels = 4;
    slot.originX = originX;
    slot.originY = originY;
    slot.width = width;
    slot.height = height;
    slot.rowPixels = unsigned(world_.rowBytes / world_.pixelBytes());
    slot.pixels = world_.data.data();
    return slot;
}

Pixel HostImage::at(unsigned x, unsigned y) const {
    return pixelAt(world_, int(x), int(y));
}

void HostImage::set(unsigned x, unsigned y, const Pixel& pixel) {
    setPixel(world_, int(x), int(y), pixel);
}

bool HostImage::isPaddingIntact() const {
    const auto rowBytes = static_cast<std::size_t>(world_.rowBytes);
    for (std::size_t i = 0; i < world_.data.size(); ++i)
        if (i % rowBytes >= std::size_t{width} * 4 * componentBytes && world_.data[i] != guardByte)
            return false;
    return true;
}

EngineTest::EngineTest() {
    glewInit();
    EXPECT_STREQ(missingFeature(), nullptr) << "the engine cannot be tested here";
    messages = {};
    takeUploads();
    setReportHandler([](const char* text) { messages[0] += text; }, ChannelTrace);
    setReportHandler([](const char* text) { messages[1] += text; }, ChannelInfo);
    setReportHandler([](const char* text) { messages[2] += text; }, ChannelErrorLog);
}

EngineTest::~EngineTest() {
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    for (const int channel : {ChannelTrace, ChannelInfo, ChannelErrorLog})
        setReportHandler(nullptr, channel);
}

std::unique_ptr<pbGraph> EngineTest::kernelGraph(const std::string& text) {
    pbKernelInfo kernel;
    PBKParser(text, kernel).parseKernel();
    return makeObject<pbGraph>(kernel, hostSwizzle);
}

std::unique_ptr<pbGraph> EngineTest::fileGraph(const std::string& text) {
    pbGraphInfo info;
    readGraphText(text, info);
    return makeObject<pbGraph>(info, hostSwizzle);
}

std::string kernelText(const std::string& declarations, const std::string& body,
                       const std::string& metadata) {
    return "<languageVersion : 1.0;>\nkernel Test < namespace: \"t\"; vendor: \"v\"; version: 1; " +
           metadata +
           ">\n{"
           "input image4 src; output pixel4 dst;\n" +
           declarations + "\nvoid evaluatePixel() {" + body + "}\n}\n";
}

void EngineTest::renderFrame(pbGraph& graph, FrameDescription frame, HostImage& output) {
    ASSERT_TRUE(isRunnable(graph));
    for (std::int32_t i = 0; i < graph.imageNodeCount(); ++i)
        graph.imageNodeAt(i)->slot = i;
    graph.render(frame);
    FrameDescription target;
    static_cast<ImageSlot&>(target) = output.slot(-1);
    graph.output()->readBack(target);
    graph.resetNodes();
    EXPECT_TRUE(output.isPaddingIntact());
}

HostImage EngineTest::renderImages(pbGraph& graph, std::vector<HostImage>& images) {
    const HostImage& first = images.front();
    HostImage output(first.width, first.height, first.componentBytes);
    FrameDescription frame = frameFor(output);
    for (std::size_t i = 0; i < images.size(); ++i)
        frame.images[i] = images[i].slot(static_cast<std::int32_t>(i));
    renderFrame(graph, frame, output);
    return output;
}

std::string EngineTest::info() {
    return messages[1];
}

std::string EngineTest::log() {
    return messages[2];
}

std::string EngineTest::trace() {
    return messages[0];
}

FrameDescription frameFor(HostImage& output) {
    FrameDescription frame;
    static_cast<ImageSlot&>(frame) = output.slot(-1);
    frame.pixels = nullptr;
    return frame;
}

float largestError(const HostImage& image,
                   const std::function<Pixel(unsigned x, unsigned y)>& expected) {
    float largest = 0;
    for (unsigned y = 0; y < image.height; ++y)
        for (unsigned x = 0; x < image.width; ++x) {
            const Pixel wanted = expected(x, y);
            const Pixel got = image.at(x, y);
            for (std::size_t k = 0; k < 4; ++k) {
                const float error = std::abs(wanted[k] - got[k]);
                if (std::isnan(error)) // std::max would ignore NaN
                    return std::numeric_limits<float>::infinity();
                largest = std::max(largest, error);
            }
        }
    return largest;
}

Pixel testPattern(unsigned x, unsigned y, unsigned seed) {
    const auto channel = [&](unsigned k) {
        return static_cast<float>((x * 37 + y * 101 + k * 59 + seed * 83 + x * y * 7) % 256) /
               255.0F;
    };
    return {channel(0), channel(1), channel(2), channel(3)};
}
