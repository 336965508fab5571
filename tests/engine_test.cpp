// Kernels through the engine on real OpenGL, compared with pixels that are computed here.

#include <GL/glew.h>

#include <cmath>
#include <numeric>
#include <tuple>

#include "engine/pixels/channel_scale.h"
#include "tests/support/engine_fixture.h"

namespace {

constexpr Pixel transparent{};

// One step of the depth, or the rounding error of float arithmetic.
float stepOf(unsigned componentBytes) {
    return componentBytes == 1 ? 1.01F / 255 : componentBytes == 2 ? 1.01F / 32768 : 1e-6F;
}

HostImage pattern(unsigned width, unsigned height, unsigned componentBytes) {
    return {width, height, componentBytes,
            [](unsigned x, unsigned y) { return testPattern(x, y); }};
}

class Engine : public EngineTest {
protected:
    static const Node& nodeOf(const pbGraph& graph) {
        return static_cast<const Node&>(*graph.nodes[0]);
    }

    // Checks that the frame is the fixed-function pipeline's white.
    static void expectWhite(pbGraph& graph) {
        std::vector<HostImage> images{pattern(4, 4, 1)};
        const HostImage result = renderImages(graph, images);
        EXPECT_EQ(largestError(result, [](unsigned, unsigned) { return Pixel{1, 1, 1, 1}; }), 0);
        EXPECT_EQ(graph.frameError, 0U);
    }

    static int attachedStages(const pbGraph& graph) {
        GLint count = -1;
        glGetProgramiv(nodeOf(graph).impl->program.get(), GL_ATTACHED_SHADERS, &count);
        return count;
    }

    const std::string copy_ = kernelText("", "dst = sampleNearest(src, outCoord());");
};

// The comparison that all tests here use.
TEST_F(Engine, NothingIsCloseToNaN) {
    const auto nan = [](unsigned x, unsigned) { return Pixel{0, x == 0 ? NAN : 0, 0, 0}; };
    const HostImage image(2, 1, 4, nan);
    EXPECT_FALSE(largestError(image, nan) <= 1e30F);
    EXPECT_FALSE(largestError(image, [](unsigned, unsigned) { return transparent; }) <= 1e30F);
}

// Compares the conversion of 16-bit values on the processor with the driver's, for every value:
// uploads, which the driver doubles, and read-backs, which it halves.
TEST_F(Engine, ScalesSixteenBitsAsTheDriverDoes) {
    using Channels = std::vector<std::uint16_t>;
    Channels all(65536);
    std::iota(all.begin(), all.end(), std::uint16_t{0});
    const RenderTexture texture = RenderTexture::create();
    const auto throughDriver = [&](float in, float out) {
        const auto scale = [](float factor) {
            for (const GLenum channel :
                 {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE})
                glPixelTransferf(channel, factor);
        };
        Channels result(all.size());
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
        glPixelStorei(GL_PACK_ROW_LENGTH, 0);
        glBindTexture(GL_TEXTURE_2D, texture.texture.get());
        scale(in);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16, 128, 128, 0, GL_RGBA, GL_UNSIGNED_SHORT,
                     all.data());
        scale(out);
        glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, texture.framebuffer.get());
        glReadPixels(0, 0, 128, 128, GL_RGBA, GL_UNSIGNED_SHORT, result.data());
        scale(1);
        glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        return result;
    };
    Channels doubled(all.size());
    doubleChannels(all.data(), doubled.data(), all.size());
    EXPECT_EQ(doubled, throughDriver(2, 1));
    EXPECT_EQ(doubled[0x7FFF], 0xFFFE);
    EXPECT_EQ(doubled[0x8000], 0xFFFF);
    Channels halved = all;
    halveChannels(halved.data(), halved.size());
    EXPECT_EQ(halved, throughDriver(1, 0.5F));
}

// Rows longer than the staging area.
TEST_F(Engine, SixteenBitsOfLongRowsAreExact) {
    const auto graph = kernelGraph(copy_);
    const auto value = [](unsigned x, unsigned y) {
        const auto channel = [&](unsigned k) {
            return static_cast<float>((x * 31 + y * 7919 + k * 12007) % 32769) / 32768;
        };
        return Pixel{channel(0), channel(1), channel(2), channel(3)};
    };
    std::vector<HostImage> images{HostImage(9001, 5, 2, value)};
    const HostImage result = renderImages(*graph, images);
    EXPECT_EQ(largestError(result, value), 0);
}

// An image that is smaller than the frame or extends beyond its edges.
TEST_F(Engine, PlacesAnImageAtItsOrigin) {
    const auto graph = kernelGraph(copy_);
    const std::pair<std::int32_t, std::int32_t> origins[] = {{0, 0},   {10, 20}, {-7, -5}, {35, 25},
                                                             {-30, 3}, {40, 0},  {0, -99}};
    for (const auto& [left, top] : origins)
        for (const unsigned depth : {1U, 2U, 4U}) {
            HostImage image = pattern(30, 15, depth);
            HostImage output(40, 30, depth);
            FrameDescription frame = frameFor(output);
            frame.images[2] = image.slot(0, left, top);
            renderFrame(*graph, frame, output);
            const auto expected = [left = left, top = top](unsigned x, unsigned y) {
                const unsigned sourceX = x - static_cast<unsigned>(left);
                const unsigned sourceY = y - static_cast<unsigned>(top);
                return sourceX < 30 && sourceY < 15 ? testPattern(sourceX, sourceY) : transparent;
            };
            EXPECT_LE(largestError(output, expected), stepOf(depth)) << left << ", " << top;
        }
}

// An output with an origin gets its part of the frame.
TEST_F(Engine, ReadsBackFromTheOutputsOrigin) {
    const auto graph = kernelGraph(copy_);
    const auto readBack = [&](HostImage& image, const ImageSlot& output) {
        FrameDescription frame = frameFor(image);
        frame.images[0] = image.slot(0);
        graph->imageNodeAt(0)->slot = 0;
        graph->render(frame);
        FrameDescription target;
        static_cast<ImageSlot&>(target) = output;
        graph->output()->readBack(target);
        graph->resetNodes();
    };
    HostImage image = pattern(40, 30, 1);
    HostImage part(12, 9, 1);
    readBack(image, part.slot(-1, 5, 8));
    EXPECT_EQ(largestError(part, [](unsigned x, unsigned y) { return testPattern(x + 5, y + 8); }),
              0);
    EXPECT_TRUE(part.isPaddingIntact());

    // An output that extends beyond the frame: pixels outside the frame are unchanged, at 16 bits
    // too.
    const auto grey = [](unsigned, unsigned) { return Pixel{0.5F, 0.5F, 0.5F, 0.5F}; };
    HostImage deep = pattern(8, 6, 2);
    HostImage wide(14, 11, 2, grey);
    readBack(deep, wide.slot(-1, -3, -2));
    const auto expected = [&](unsigned x, unsigned y) {
        const bool isInside = x >= 3 && x < 11 && y >= 2 && y < 8;
        return isInside ? deep.at(x - 3, y - 2) : grey(x, y);
    };
    EXPECT_EQ(largestError(wide, expected), 0);

    // Rows that are shorter than the width: rows must not overlap, and nothing is written after the
    // last.
    HostImage narrow(4, 30, 1);
    ImageSlot shortRows = narrow.slot(-1);
    shortRows.width = 40;
    shortRows.rowPixels = 4;
    shortRows.height = 10;
    readBack(image, shortRows);
    EXPECT_EQ(narrow.at(0, 6), HostImage(4, 30, 1).at(0, 6)); // the third pixel after row 9
}

// With downsampling, the centre of a full-size pixel lies between frame pixels: at half the
// resolution, a quarter of a pixel from one.
TEST_F(Engine, FiltersLinearlyWhereTheFrameIsDownsampled) {
    const auto graph = kernelGraph(copy_);
    for (const bool isAcross : {true, false}) {
        HostImage image = pattern(12, 12, 4);
        HostImage output(12, 12, 4);
        FrameDescription frame = frameFor(output);
        (isAcross ? frame.downsampleX : frame.downsampleY) = 0.5F;
        frame.images[0] = image.slot(0);
        renderFrame(*graph, frame, output);
        const auto expected = [&](unsigned x, unsigned y) {
            const bool isEdge = (isAcross ? x : y) == 11;
            const Pixel next =
                isEdge ? transparent : testPattern(x + isAcross, y + (isAcross ? 0 : 1));
            Pixel mixed = testPattern(x, y);
            for (std::size_t k = 0; k < 4; ++k)
                mixed[k] = 0.75F * mixed[k] + 0.25F * next[k];
            return mixed;
        };
        EXPECT_LE(largestError(output, expected), 1e-5F) << isAcross;
    }
}

TEST_F(Engine, SendsFrameAndPixelSizes) {
    const auto graph = kernelGraph(
        kernelText("input image4 other;", "dst = sample(src, outCoord()) * 0.0 + float4("
                                          "pixelSize(0).x, pixelSize(1).x, pixelAspectRatio(dst), "
                                          "tvek_compSize.y) + 0.0 * sample(other, outCoord());"));
    HostImage output(8, 6, 4);
    HostImage image = pattern(8, 6, 4);
    FrameDescription frame = frameFor(output);
    frame.pixelAspect = 1.25F;
    frame.images[0] = image.slot(0);
    frame.images[0].pixelAspect = 2.5F;
    renderFrame(*graph, frame, output);
    EXPECT_EQ(largestError(output, [](unsigned, unsigned) { return Pixel{2.5F, 1, 1.25F, 6}; }), 0);
}

// After a frame the textures have one pixel, and the scale is 1.
TEST_F(Engine, ReleasesTextureStorageAfterAFrame) {
    const auto graph = kernelGraph(copy_);
    std::vector<HostImage> images{pattern(8, 6, 2)};
    renderImages(*graph, images);
    for (const auto& node : graph->nodes) {
        GLint width = 0;
        glBindTexture(GL_TEXTURE_2D, node->texture());
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        EXPECT_EQ(width, 1);
    }
    GLfloat scale = 0;
    glGetFloatv(GL_ALPHA_SCALE, &scale);
    EXPECT_EQ(scale, 1.0F);
}

// A shader that does not compile is reported on all three channels and on standard output; the
// graph is kept, and the frame is the fixed-function pipeline's white.
TEST_F(Engine, ReportsAShaderThatDoesNotCompile) {
    testing::internal::CaptureStdout();
    const auto graph = kernelGraph(kernelText("", "dst = nothing;"));
    const std::string printed = testing::internal::GetCapturedStdout();
    const std::string message = "!!!Test vertex shader failed to compile\n"
                                "!!!Test fragment shader failed to compile\n";
    EXPECT_TRUE(info().starts_with(message)) << info();
    EXPECT_TRUE(trace().starts_with(message)) << trace();
    EXPECT_TRUE(log().starts_with("Test(v)\n")) << log();
    EXPECT_NE(log().find("\n\nTest(f)\n"), std::string::npos) << log();
    EXPECT_TRUE(
        printed.starts_with("*********** vglsl **********\n\n#define tvek_VERTEX_SHADER\n"));
    EXPECT_NE(printed.find("}\n****************************\n"), std::string::npos);
    EXPECT_NE(printed.find("*********** fglsl **********\n#define parameter uniform\n"),
              std::string::npos);
    const std::string words = log().substr(log().find("Test(f)\n") + 8); // the driver's log
    EXPECT_GT(words.size(), 10U);
    EXPECT_TRUE(
        printed.ends_with("}\n****************************\n" + words.substr(0, words.size() - 2)));
    EXPECT_EQ(attachedStages(*graph), 0);
    expectWhite(*graph);

    testing::internal::CaptureStdout();
    const auto half = kernelGraph(
        kernelText("\n#ifndef tvek_VERTEX_SHADER\nbroken\n#endif\n", "dst = float4(1.0);"));
    EXPECT_EQ(attachedStages(*half), 1);
    testing::internal::GetCapturedStdout();
}

TEST_F(Engine, ReportsAProgramThatDoesNotLink) {
    testing::internal::CaptureStdout();
    const auto graph =
        kernelGraph(kernelText("float4 nowhereDefined();", "dst = nowhereDefined();"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(info(), "!!!Test program failed to link\n");
    EXPECT_EQ(trace(), info());
    std::array<char, 1024> words{};
    glGetProgramInfoLog(nodeOf(*graph).impl->program.get(), 1023, nullptr, words.data());
    EXPECT_STRNE(words.data(), "");
    EXPECT_EQ(log(), std::string("Test(l)\n") + words.data() + "\n\n");
    expectWhite(*graph);
}

// Drivers crash with programs that exceed their limits: Mesa does from about 300 components.
TEST_F(Engine, RejectsDependentsBeyondTheDriversLimit) {
    GLint limit = 0;
    glGetIntegerv(GL_MAX_VARYING_FLOATS, &limit);
    const char* position = "sum + 0.0 * outCoord().x"; // uses four more components
    const std::tuple<int, const char*, int> cases[] = {
        // count, pixel, components needed (0: it links, and the pixel is the sum of all)
        {limit - 4, position, 0},      {limit, "sum", 0}, {limit - 3, position, limit + 1},
        {limit + 1, "sum", limit + 1}, {385, "sum", 385}, {1024, position, 1028}};
    for (const auto& [count, pixel, needed] : cases) {
        const std::string text =
            "kernel Test { output pixel4 dst; const int n = " + std::to_string(count) +
            "; dependent float a[n];"
            "void evaluateDependents() { for (int i = 0; i < n; ++i) a[i] = 1.0; }"
            "void evaluatePixel() { float sum = 0.0; for (int i = 0; i < n; ++i) sum += a[i];"
            "dst = float4(" +
            pixel + "); } }";
        const std::size_t message = log().size();
        const auto graph = kernelGraph(text);
        EXPECT_EQ(nodeOf(*graph).impl->isLinked, needed == 0) << text << log();
        EXPECT_EQ(log().substr(message),
                  needed == 0
                      ? ""
                      : "Test(l)\nThe dependents need " + std::to_string(needed) +
                            " varying components, OpenGL has " + std::to_string(limit) + ".\n\n");
        HostImage output(2, 2, 4);
        renderFrame(*graph, frameFor(output), output);
        EXPECT_EQ(output.at(1, 1)[0], needed == 0 ? static_cast<float>(count) : 1.0F);
    }
}

// A frame larger than any texture is reported as failed; in the log only once for consecutive
// failures.
TEST_F(Engine, ReportsAFrameThatOpenGLRejects) {
    const auto graph = kernelGraph(copy_);
    const std::string message = "!!!Test OpenGL error: invalid value\n";
    std::string expectedInfo;
    for (const bool isTooLarge : {true, true, false, true}) {
        std::vector<HostImage> images{pattern(isTooLarge ? 1U << 20 : 8, 1, 1)};
        glEnable(0xFFFF); // an error left by other code
        const HostImage result = renderImages(*graph, images);
        EXPECT_EQ(graph->frameError, isTooLarge ? static_cast<unsigned>(GL_INVALID_VALUE) : 0U);
        if (isTooLarge)
            expectedInfo += message;
        else
            EXPECT_EQ(result.at(7, 0), testPattern(7, 0));
        EXPECT_EQ(info(), expectedInfo);
    }
    EXPECT_EQ(log(), "Test OpenGL error: invalid value\n\nTest OpenGL error: invalid value\n\n");
#ifdef NDEBUG
    EXPECT_EQ(trace(), info());
#else
    EXPECT_NE(trace().find("OpenGL error after a texture's storage: invalid value\n"),
              std::string::npos)
        << trace();
#endif
}

} // namespace
