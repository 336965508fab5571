// Fixture for tests of the engine: a running command with the device's context current, graphs
// built from text, their reports, and images in host memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/graph/pb_graph.h"
#include "engine/nodes/image_node.h"
#include "gpu/device.h"
#include "hostkit/project/project.h"
#include "tests/support/running_command.h"

using Pixel = std::array<float, 4>; // red, green, blue, alpha; 1.0 is white at every depth

// Access to a pixel in the host's memory: alpha, red, green, blue of 1, 2 (0 to 32768) or 4 bytes
// (float).
Pixel pixelAt(const hostkit::World& world, int x, int y);
void setPixel(hostkit::World& world, int x, int y, const Pixel& pixel);

// An image in the host's memory with padding after each row, which must not be written.
class HostImage {
public:
    HostImage(unsigned width, unsigned height, unsigned componentBytes);
    HostImage(unsigned width, unsigned height, unsigned componentBytes,
              const std::function<Pixel(unsigned x, unsigned y)>& paint);

    ImageSlot slot(std::int32_t imageIndex, std::int32_t originX = 0, std::int32_t originY = 0);

    Pixel at(unsigned x, unsigned y) const;
    void set(unsigned x, unsigned y, const Pixel& pixel);

    // Whether all bytes outside the pixels are unchanged.
    bool isPaddingIntact() const;

    unsigned width;
    unsigned height;
    unsigned componentBytes;

private:
    hostkit::World world_;
};

// The text of a kernel "Test" with one input `src`, the given declarations, body of evaluatePixel,
// and additional metadata.
std::string kernelText(const std::string& declarations, const std::string& body,
                       const std::string& metadata = "");

class EngineTest : public RunningCommand {
protected:
    EngineTest();
    ~EngineTest() override;

    // A graph from the text of a kernel or graph file. It must be destroyed before the test ends.
    std::unique_ptr<pbGraph> kernelGraph(const std::string& text);
    std::unique_ptr<pbGraph> fileGraph(const std::string& text);

    // Renders one frame. renderImages assigns the images to the graph's image nodes in order; the
    // result has the size of the first.
    static void renderFrame(pbGraph& graph, FrameDescription frame, HostImage& output);
    static HostImage renderImages(pbGraph& graph, std::vector<HostImage>& images);

    static std::string info();  // all output of the info channel
    static std::string log();   // of the error log channel
    static std::string trace(); // of the trace channel

private:
    OwnDevice device_{"EngineTest"};
    ContextSwitch current_{device_};
};

// A frame with the output's size and depth, without images.
FrameDescription frameFor(HostImage& output);

// The largest absolute difference from the expected image over all pixels and channels; infinite if
// either value is NaN.
float largestError(const HostImage& image,
                   const std::function<Pixel(unsigned x, unsigned y)>& expected);

// A deterministic pattern without repetition, different for each seed, with values from 0 to 1 that
// are exact at 8 bits.
Pixel testPattern(unsigned x, unsigned y, unsigned seed = 0);
