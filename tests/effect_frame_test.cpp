// Frames of the effect: output pixels, input layers, and parts of the frame.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <vector>

#include "hostkit/calls/calls.h"
#include "hostkit/suites/basic_suite.h"
#include "tests/support/module_fixture.h"

using namespace hostkit;
using testing::EndsWith;

namespace {

const std::string copyKernel = kernelText("", "dst = sampleNearest(src, outCoord());");

// The world's pixel; transparent black outside of it.
Pixel within(const World& world, int x, int y) {
    const bool isInside = x >= 0 && y >= 0 && x < world.width && y < world.height;
    return isInside ? pixelAt(world, x, y) : Pixel{};
}

class EffectFrame : public ModuleTest {
protected:
    void choose(Effect& effect, std::size_t control, const Layer* chosen) {
        effect.control(control).constant.value.layer_id = chosen == nullptr ? 0 : chosen->id;
    }

    // Renders and checks the whole output, which has the size of the layer.
    void expectFrame(Effect& effect, const std::function<Pixel(int x, int y)>& expected) {
        const RenderResult result = effect.render({});
        const World& source = effect.layer->source->pixels;
        ASSERT_EQ(result.error, 0);
        ASSERT_EQ(result.output.width, source.width);
        ASSERT_EQ(result.output.height, source.height);
        const double error = source.componentBytes == 1 ? 0.51 / 255 : 1.01 / 32768;
        for (int y = 0; y < source.height; ++y)
            for (int x = 0; x < source.width; ++x)
                for (std::size_t k = 0; k < 4; ++k)
                    EXPECT_NEAR(pixelAt(result.output, x, y)[k], expected(x, y)[k], error)
                        << x << ", " << y << ", channel " << k;
    }
};

PF_LRect rectOf(const std::vector<A_long>& sides) {
    return {sides[0], sides[1], sides[2], sides[3]};
}

std::vector<A_long> sidesOf(const PF_LRect& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

} // namespace

TEST_F(EffectFrame, KeepsEveryValueOfEachDepth) {
    for (const int bytes : {1, 2, 4}) {
        Layer& layer = addPicture(256, 129, bytes);
        World& source = layer.source->pixels;
        for (int i = 0; i < 256 * 129; ++i) {
            std::byte* pixel = &source.data[i / 256 * source.rowBytes + i % 256 * 4 * bytes];
            const auto wide = static_cast<std::uint16_t>(std::min(i, 32768));
            const float number = static_cast<float>(i - 1000) * 0.37e-3F;
            for (int k = 0; k < 4; ++k)
                if (bytes == 4)
                    std::memcpy(pixel + k * bytes, &number, 4);
                else
                    std::memcpy(pixel + k * bytes, &wide, static_cast<std::size_t>(bytes));
        }
        const World before = source;
        const RenderResult result = applyKernel(layer, copyKernel).render({});
        ASSERT_EQ(result.error, 0);
        EXPECT_EQ(source.data, before.data);
        for (int y = 0; y < 129; ++y)
            ASSERT_EQ(std::memcmp(&result.output.data[y * result.output.rowBytes],
                                  &before.data[y * before.rowBytes],
                                  static_cast<std::size_t>(256 * 4 * bytes)),
                      0)
                << bytes << " bytes, row " << y;
    }
}

// The frame has the size of the largest layer; smaller layers are transparent outside their pixels.
TEST_F(EffectFrame, GrowsToTheLayersThatAreChosen) {
    const std::string path = write(
        "two.pbk", kernelText("input image4 other;",
                              "float4 a = sampleNearest(src, outCoord() + float2(2.0, 1.0));"
                              "float4 b = sampleNearest(other, outCoord() + float2(3.0, 2.0));"
                              "dst = float4(a.r, b.g, pixelSize(1).x / 4.0, a.a + b.a);"));
    for (const int bytes : {1, 2, 4}) {
        SCOPED_TRACE(bytes);
        Layer& layer = addPicture(4, 3, bytes);
        Layer& other = addPicture(7, 5, bytes);
        other.source->pixelAspect = {2, 1};
        setPixel(other.source->pixels, 3, 2, {0, 1, 0, 0.25F});
        // Alpha is below one half, so that sums are at most 1.
        for (Layer* const all : {&layer, &other})
            for (int i = 0; i < all->source->width * all->source->height; ++i) {
                World& world = all->source->pixels;
                Pixel pixel = pixelAt(world, i % world.width, i / world.width);
                pixel[3] = static_cast<float>(i) / 255;
                setPixel(world, i % world.width, i / world.width, pixel);
            }
        Effect& effect = apply(layer, path);
        for (const Layer* chosen : {static_cast<Layer*>(nullptr), &other, &layer}) {
            choose(effect, 1, chosen);
            expectFrame(effect, [&](int x, int y) {
                const Pixel a = within(layer.source->pixels, x + 2, y + 1);
                const Pixel b =
                    chosen != nullptr ? within(chosen->source->pixels, x + 3, y + 2) : Pixel{};
                return Pixel{a[0], b[1], chosen == &other ? 0.5F : 0.25F, a[3] + b[3]};
            });
        }
    }
}

TEST_F(EffectFrame, FourImagesAreReadAndAFifthIsTransparent) {
    Layer& layer = addPicture(4, 4);
    Layer& small = addPicture(2, 3);
    setPixel(small.source->pixels, 1, 1, {0.2F, 0.4F, 0.6F, 0.8F});
    Effect& effect = applyKernel(
        layer, kernelText("input image4 a; input image4 b; input image4 c; input image4 d;",
                          "float2 p = outCoord(); dst = float4(sampleNearest(a, p).r,"
                          "sampleNearest(b, p).g, sampleNearest(c, p).b,"
                          "sampleNearest(src, p).a + sampleNearest(d, p).a);"));
    for (int chosen = 0; chosen < 8; ++chosen) {
        for (std::size_t control = 1; control <= 3; ++control)
            choose(effect, control, (chosen >> (control - 1) & 1) != 0 ? &small : nullptr);
        expectFrame(effect, [&](int x, int y) {
            Pixel pixel = within(small.source->pixels, x, y);
            for (std::size_t k = 0; k < 3; ++k)
                pixel[k] *= static_cast<float>(chosen >> k & 1);
            pixel[3] = pixelAt(layer.source->pixels, x, y)[3];
            return pixel;
        });
    }
}

// Renders a part of the frame; the kernel may read anywhere.
TEST_F(EffectFrame, RendersOnlyTheRequestedPart) {
    Layer& layer = addPicture(8, 6);
    Effect& effect = applyKernel(
        layer, kernelText("", "dst = sampleNearest(src, float2(7.9, 5.9) - outCoord());"));
    const std::vector<A_long> cases[][2] = {
        // requested, announced
        {{0, 0, 8, 6}, {0, 0, 8, 6}}, {{3, 1, 7, 4}, {3, 1, 7, 4}}, {{-2, -1, 3, 9}, {0, 0, 3, 6}},
        {{2, 2, 2, 2}, {0, 0, 0, 0}}, {{5, 5, 4, 9}, {0, 0, 0, 0}},
    };
    for (const auto& [asked, announced] : cases) {
        const RenderResult result = effect.render({0, {1, 1}, {1, 1}, rectOf(asked)});
        EXPECT_EQ(result.error, 0);
        EXPECT_EQ(sidesOf(result.resultRect), announced);
        EXPECT_EQ(sidesOf(result.maxResultRect), (std::vector<A_long>{0, 0, 8, 6}));
        for (int y = 0; y < result.output.height; ++y)
            for (int x = 0; x < result.output.width; ++x)
                EXPECT_EQ(pixelAt(result.output, x, y),
                          pixelAt(layer.source->pixels, 7 - x - announced[0], 5 - y - announced[1]))
                    << x << ", " << y;
    }
}

TEST_F(EffectFrame, IsTheSameWithoutTheKernelsFile) {
    Layer& layer = addPicture(6, 5);
    const std::string path = write("copy.pbk", copyKernel);
    const std::string graph =
        write("graph.pbg", "<graph name='Pair'><inputImage type='image4' name='in'/><kernel>"
                           "<![CDATA[" +
                               copyKernel +
                               "]]></kernel><node id='a' name='Test'/>"
                               "<connect fromImage='in' toNode='a' toInput='src'/>"
                               "<connect fromNode='a' fromOutput='dst' toImage='out'/></graph>");
    apply(layer, graph);
    EXPECT_THAT(shown(), EndsWith("Graph has been loaded from file:\nPair\n"));
    apply(layer, graph);
    EXPECT_THAT(shown(), EndsWith("Graph has been loaded from memory\nPair\n"));
    Effect& first = apply(layer, path);
    const World once = first.render({}).output;
    EXPECT_EQ(first.render({}).output.data, once.data);

    // The kernel is kept in memory; its file may have changed or been deleted.
    write("copy.pbk", kernelText("", "dst = float4(0.0);"));
    EXPECT_EQ(apply(layer, path).render({}).output.data, once.data);
    std::filesystem::remove(path);
    EXPECT_EQ(apply(layer, path).render({}).output.data, once.data);
    EXPECT_THAT(shown(), EndsWith("Kernel has been loaded from memory\nTest\n"));
}

// A kernel gets the pixel aspect ratio and the resolution of the frame.
TEST_F(EffectFrame, PassesPixelAspectAndResolution) {
    Layer& layer = addPicture(8, 8, 4);
    layer.source->pixelAspect = {3, 2};
    Effect& effect = applyKernel(
        layer, kernelText("", "dst = float4(outCoord(), pixelSize(0).x, pixelSize(0).y);"));
    for (const A_u_long factor : {1U, 2U, 4U}) {
        const RenderResult result = effect.render({0, {1, factor}, {1, 2 * factor}, {}});
        ASSERT_EQ(result.output.width, static_cast<int>(8 / factor));
        for (int i = 0; i < result.output.width * result.output.height; ++i) {
            const int x = i % result.output.width, y = i / result.output.width;
            const Pixel seen = pixelAt(result.output, x, y);
            EXPECT_NEAR(seen[0], (x + 0.5) * factor, 1e-4);
            EXPECT_NEAR(seen[1], (y + 0.5) * 2 * factor, 1e-4);
            EXPECT_EQ(seen[2], 1.5F);
            EXPECT_EQ(seen[3], 1.0F);
        }
    }
}

// A layer whose visible pixels are only a part, and a larger second layer.
TEST_F(EffectFrame, PlacesALayerAtItsOrigin) {
    Layer& layer = addPicture(8, 6);
    layer.contents = PF_LRect{2, 1, 7, 5};
    setPixel(layer.source->pixels, 3, 2, {0.2F, 0.4F, 0.6F, 0}); // colours with alpha 0 are kept
    Effect& effect = applyKernel(
        layer, kernelText("input image4 other;",
                          "dst = float4(sampleNearest(src, outCoord()).rg, outCoord() / 16.0);"));
    choose(effect, 1, &addPicture(10, 10));
    const RenderResult result = effect.render({});
    EXPECT_EQ(sidesOf(result.resultRect), (std::vector<A_long>{2, 1, 7, 5}));
    ASSERT_EQ(result.output.width, 5);
    ASSERT_EQ(result.output.height, 4);
    for (int i = 0; i < 5 * 4; ++i) {
        const int x = i % 5 + 2, y = i / 5 + 1; // in pixels of the layer
        const Pixel source = pixelAt(layer.source->pixels, x, y);
        const double expected[] = {source[0], source[1], (x + 0.5) / 16, (y + 0.5) / 16};
        for (std::size_t k = 0; k < 4; ++k)
            EXPECT_NEAR(pixelAt(result.output, x - 2, y - 1)[k], expected[k], 0.51 / 255) << i;
    }
}

TEST_F(EffectFrame, ReturnsTheCodeOfTheFailure) {
    Effect& effect = applyKernel(addPicture(), copyKernel);
    World painted = effect.render({}).output;
    std::ranges::fill(painted.data, std::byte{0x5A});
    const std::vector<std::byte> before = painted.data;
    for (const char* call :
         {"checkout_layer", "checkout_layer_pixels", "checkout_output", "PF_GetPixelFormat"}) {
        calls::failAt(call, 1);
        RenderResult result = effect.render({}, painted);
        EXPECT_EQ(result.error, calls::injectedError) << call;
        EXPECT_TRUE(result.output.data.empty() || result.output.data == before) << call;
    }
    suites::refuse("PF World Suite", 2);
    EXPECT_EQ(effect.render({}, painted).error, 1);
}

TEST_F(EffectFrame, IsUnchangedWithoutAKernel) {
    Effect& effect = addEffect(addPicture());
    ASSERT_EQ(effect.apply(), 0);
    World painted = effect.render({}).output;
    std::ranges::fill(painted.data, std::byte{0x5A});
    const RenderResult result = effect.render({}, painted);
    EXPECT_EQ(result.error, 0);
    EXPECT_EQ(result.output.data, painted.data);
}
