#include "bench/chain.h"

#include <GL/glew.h>

#include <algorithm>
#include <random>
#include <string>

#include "bench/texture_bytes.h"
#include "engine/graph/pb_graph.h"
#include "engine/nodes/image_node.h"
#include "engine/pixels/channel_order.h"
#include "engine/program/glsl_generator.h"
#include "pixelbender/graph_reader.h"

namespace bench {

namespace {

using pbhost::Depth;
using pbhost::Picture;

constexpr const char* chainHead = R"xml(<?xml version="1.0"?>
<graph name="Chain" languageVersion="1">
<parameter name="gain" type="float"><metadata name="defaultValue" value="0.96875"/></parameter>
<inputImage type="image4" name="src"/>
<outputImage type="pixel4" name="dst"/>
<kernel><![CDATA[
<languageVersion : 1.0;>
kernel Gain < namespace : "bench"; vendor : "bench"; version : 1; >
{
    parameter float gain;
    input image4 src;
    output pixel4 dst;
    void evaluatePixel() { dst = sampleNearest(src, outCoord()) * gain; }
}
]]></kernel>
)xml";

template<class Value>
void store(Picture& picture, std::size_t index, Value value) {
    reinterpret_cast<Value*>(picture.pixels.data())[index] = value;
}

void describe(ImageSlot& slot, Picture& picture) {
    slot.componentBytes = pbhost::componentBytesOf(picture.depth);
    slot.channels = pbhost::channelsPerPixel;
    slot.width = picture.width;
    slot.height = picture.height;
    slot.rowPixels = picture.width;
    slot.pixels = picture.pixels.data();
}

void engineFrame(pbGraph& graph, Picture& input, Picture& output) {
    FrameDescription frame;
    describe(frame, output);
    describe(frame.images[0], input);
    frame.images[0].imageIndex = 0;
    graph.render(frame);
    graph.output()->readBack(frame);
    graph.resetNodes();
}

} // namespace

std::string chainText(std::size_t passes) {
    std::string text = chainHead;
    std::string from = "fromImage=\"src\"";
    for (std::size_t i = 0; i < passes; ++i) {
        const std::string id = "pass" + std::to_string(i);
        text += "<node id=\"" + id + "\" name=\"Gain\"><evaluateParameters>\n" +
                "void evaluateParameters() { " + id + "::gain = gain; }\n" +
                "</evaluateParameters></node>\n<connect " + from + " toNode=\"" + id +
                "\" toInput=\"src\"/>\n";
        from = "fromNode=\"" + id + "\" fromOutput=\"dst\"";
    }
    return text + "<connect " + from + " toImage=\"dst\"/>\n</graph>\n";
}

std::vector<PassTexts> passTexts(std::size_t passCount) {
    pbGraphInfo info;
    readGraphText(chainText(passCount), info);
    std::vector<PassTexts> passes(info.nodes.size());
    for (std::size_t i = 0; i < passes.size(); ++i)
        generateNodeShaders(info, i, passes[i].vertex, passes[i].fragment, hostSwizzle);
    return passes;
}

Picture makeNoise(const ChainSize& size) {
    Picture picture = pbhost::makePicture(size.width, size.height, size.depth);
    std::minstd_rand random;
    for (std::size_t i = 0; i < picture.pixels.size() / pbhost::componentBytesOf(size.depth); ++i) {
        const unsigned value = random() % 32769;
        if (size.depth == Depth::Bits8)
            store(picture, i, static_cast<std::uint8_t>(value));
        else if (size.depth == Depth::Bits16)
            store(picture, i, static_cast<std::uint16_t>(value));
        else
            store(picture, i, static_cast<float>(value) / 16384);
    }
    return picture;
}

void runChainBenchmark(benchmark::State& state, const ChainSize& size) {
    pbGraphInfo info;
    readGraphText(chainText(size.passes), info);
    pbGraph graph(info, hostSwizzle);
    pbGraph keeping(info, hostSwizzle);
    keeping.keepsTextures = true;
    graph.imageNodeAt(0)->slot = keeping.imageNodeAt(0)->slot = 0;
    Picture input = makeNoise(size);
    std::vector<Picture> outputs(4, pbhost::makePicture(size.width, size.height, size.depth));
    SameCallsProgram same(passTexts(size.passes), gain);
    const FewestCallsProgram best(passTexts(size.passes), gain, input);
    // glFinish, because a driver may defer work beyond the end of the action.
    PairedTiming timing({[&] {
                             engineFrame(graph, input, outputs[0]);
                             glFinish();
                         },
                         [&] {
                             same.frame(input, outputs[1]);
                             glFinish();
                         },
                         [&] {
                             best.frame(input, outputs[2]);
                             glFinish();
                         },
                         [&] {
                             engineFrame(keeping, input, outputs[3]);
                             glFinish();
                         }});
    timing.round(); // warms up, and fills the outputs
    textureBytes::start();
    engineFrame(graph, input, outputs[0]);
    state.counters["peak_MiB"] = static_cast<double>(textureBytes::peak()) / (1 << 20);
    const auto isFirst = [&](const Picture& each) { return each.pixels == outputs[0].pixels; };
    if (!std::ranges::all_of(outputs, isFirst) ||
        outputs[0].pixels == std::vector<std::byte>(outputs[0].pixels.size()) ||
        glGetError() != GL_NO_ERROR)
        return state.SkipWithError("the engine and the reference programs give different pictures");
    runRounds(state, timing, "engine");
}

void runRounds(benchmark::State& state, PairedTiming& timing, const std::string& measured) {
    for ([[maybe_unused]] auto iteration : state)
        state.SetIterationTime(timing.round());
    state.counters[measured + "_ms"] = timing.medianMilliseconds(0);
    state.counters["same_ms"] = timing.medianMilliseconds(1);
    state.counters["best_ms"] = timing.medianMilliseconds(2);
    state.counters["kept_ms"] = timing.medianMilliseconds(3);
    state.counters["ratio_kept"] = timing.medianRatio(3, 2);
    state.counters["ratio_same"] = timing.medianRatio(0, 1);
    state.counters["ratio_best"] = timing.medianRatio(0, 2);
}

void applyFrameSizes(benchmark::internal::Benchmark* frame) {
    constexpr int rounds = 30;
    frame->ArgNames({"width", "height", "bits"});
    for (const auto& [width, height] : {std::pair{1920, 1080}, std::pair{3840, 2160}})
        for (const int bits : {8, 16, 32})
            frame->Args({width, height, bits});
    frame->Iterations(rounds)->UseManualTime()->Unit(benchmark::kMillisecond);
}

ChainSize frameSize(const benchmark::State& state) {
    return {1, static_cast<unsigned>(state.range(0)), static_cast<unsigned>(state.range(1)),
            pbhost::depthOfBits(static_cast<int>(state.range(2))).value()};
}

} // namespace bench
