// A test of the engine: a running command with the device's context current, graphs built from
// text, what they reported, and images in host memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/image_node.h"
#include "engine/pb_graph.h"
#include "gpu/device.h"
#include "hostkit/project/project.h"
#include "tests/support/running_command.h"

using Pixel = std::array<float, 4>; // red, green, blue, alpha; 1.0 is white at every depth

// In the host's memory a pixel is alpha, red, green, blue of 1, 2 (0 to 32768) or 4 bytes (float).
Pixel pixelAt(const hostkit::World& world, int x, int y);
void setPixel(hostkit::World& world, int x, int y, const Pixel& pixel);

// Pixels in the host's memory, with a few bytes between the rows, which nobody may touch.
class HostImage {
public:
    HostImage(unsigned width, unsigned height, unsigned componentBytes);
    HostImage(unsigned width, unsigned height, unsigned componentBytes,
              const std::function<Pixel(unsigned x, unsigned y)>& paint);

    ImageSlot slot(std::int32_t imageIndex, std::int32_t originX = 0, std::int32_t originY = 0);

    Pixel at(unsigned x, unsigned y) const;
    void set(unsigned x, unsigned y, const Pixel& pixel);

    // Whether all bytes outside the pixels are as they were made.
    bool isPaddingIntact() const;

    unsigned width;
    unsigned height;
    unsigned componentBytes;

private:
    hostkit::World world_;
};

// The text of a kernel "Test" with one input `src`, the given declarations and body of
// evaluatePixel, and more metadata if wished.
std::string kernelText(const std::string& declarations, const std::string& body,
                       const std::string& metadata = "");

class EngineTest : public RunningCommand {
protected:
    EngineTest();
    ~EngineTest() override;

    // From the text of a whole file. The graph must go before the test ends.
    std::unique_ptr<pbGraph> kernelGraph(const std::string& text);
    std::unique_ptr<pbGraph> fileGraph(const std::string& text);

    // One frame: images feed the graph's image nodes in order, the result has the output's size.
    static void renderFrame(pbGraph& graph, FrameDescription frame, HostImage& output);
    static HostImage renderImages(pbGraph& graph, std::vector<HostImage>& images);

    static std::string info();  // all that came on the user's channel
    static std::string log();   // on the error log's
    static std::string trace(); // on the developer's

private:
    OwnDevice device_{"EngineTest"};
    ContextSwitch current_{device_};
};

// The frame of an output: its size and depth, no images yet.
FrameDescription frameFor(HostImage& output);

// The largest difference between an image and what it should be, over all pixels and channels;
// infinite where either is not a number.
float largestError(const HostImage& image,
                   const std::function<Pixel(unsigned x, unsigned y)>& expected);

// A fixed pattern without repetition, different for each seed, within 0 to 1 and exact at 8 bits.
Pixel testPattern(unsigned x, unsigned y, unsigned seed = 0);
