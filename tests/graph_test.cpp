// Graph files through the engine: connections, order, cycles, and pixels compared with single
// kernels.

#include <GL/glew.h>

#include <sstream>
#include <tuple>

#include "bench/texture_bytes.h"
#include "tests/support/engine_fixture.h"
#include "tests/support/strict_gl.h"

namespace {

// Builder of graph documents.
class Document {
public:
    Document& add(const std::string& element) {
        text_ += element;
        return *this;
    }
    Document& kernel(const std::string& name, const std::string& inputs, const std::string& body,
                     const std::string& declarations = "") {
        std::string declared = declarations;
        for (const char input : inputs)
            declared += std::string("input image4 ") + input + ";";
        return add("<kernel><![CDATA[kernel " + name + " {" + declared +
                   "output pixel4 dst; void evaluatePixel() {" + body + "}}]]></kernel>");
    }
    Document& node(const std::string& id, const std::string& kernelName,
                   const std::string& evaluateParameters = "") {
        return add("<node id='" + id + "' name='" + kernelName + "'><evaluateParameters>" +
                   evaluateParameters + "</evaluateParameters></node>");
    }
    // "id.a=source", "id.b=source" and "=source" for the output, separated by blanks; "in" is the
    // image.
    Document& wire(const std::string& wires) {
        std::istringstream words(wires);
        for (std::string word; words >> word;) {
            const std::size_t equals = word.find('=');
            const std::string source = word.substr(equals + 1);
            const std::string from =
                source == "in" ? "fromImage='in'" : "fromNode='" + source + "' fromOutput='dst'";
            const std::string to = equals == 0
                                       ? "toImage='result'"
                                       : "toNode='" + word.substr(0, equals - 2) + "' toInput='" +
                                             word.substr(equals - 1, 1) + "'";
            add("<connect " + from + " " + to + "/>");
        }
        return *this;
    }
    std::string text() const {
        return "<graph name='g'><inputImage type='image4' name='in'/>" + text_ + "</graph>";
    }

private:
    std::string text_;
};

const std::string addBody =
    "dst = sampleNearest(a, outCoord()) + 2.0 * sampleNearest(b, outCoord());";
const std::string copyBody = "dst = sampleNearest(a, outCoord());";

class Graph : public EngineTest {
protected:
    HostImage render(pbGraph& graph) {
        std::vector<HostImage> images{HostImage(16, 9, 4, input)};
        return renderImages(graph, images);
    }

    // The number of pixels drawn by all passes of a frame.
    GLuint drawnPixels(pbGraph& graph) {
        GLuint query = 0;
        GLuint drawn = 0;
        glGenQueries(1, &query);
        glBeginQuery(GL_SAMPLES_PASSED, query);
        render(graph);
        glEndQuery(GL_SAMPLES_PASSED);
        glGetQueryObjectuiv(query, GL_QUERY_RESULT, &drawn);
        glDeleteQueries(1, &query);
        return drawn;
    }

    static Pixel input(unsigned x, unsigned y) { return testPattern(x, y); }
    static auto times(float factor) {
        return [factor](unsigned x, unsigned y) {
            Pixel pixel = input(x, y);
            for (float& channel : pixel)
                channel *= factor;
            return pixel;
        };
    }
};

// A chain gives the same bits as its kernels one after another; values outside 0 to 1 are kept.
TEST_F(Graph, ChainEqualsTheKernelsInTurn) {
    const std::string grow = "dst = sample(a, outCoord()) * 3.7 - 1.3;";
    const std::string bend = "pixel4 p = sample(a, outCoord()); dst = p * p + 0.1;";
    Document document;
    document.kernel("grow", "a", grow).kernel("bend", "a", bend);
    document.node("first", "grow").node("second", "bend");
    const auto graph = fileGraph(document.wire("first.a=in second.a=first =second").text());
    const HostImage whole = render(*graph);
    const std::string head = "kernel k {input image4 a; output pixel4 dst; void evaluatePixel() {";
    const auto growKernel = kernelGraph(head + grow + "}}");
    const auto bendKernel = kernelGraph(head + bend + "}}");
    std::vector<HostImage> step{render(*growKernel)};
    const HostImage steps = renderImages(*bendKernel, step);
    EXPECT_EQ(largestError(whole, [&](unsigned x, unsigned y) { return steps.at(x, y); }), 0);
    const auto expected = [](unsigned x, unsigned y) {
        Pixel p = testPattern(x, y);
        for (float& channel : p)
            channel = (channel * 3.7F - 1.3F) * (channel * 3.7F - 1.3F) + 0.1F;
        return p;
    };
    EXPECT_LE(largestError(whole, expected), 1e-5F);
    EXPECT_EQ(info() + log(), "");
}

// A node that two inputs read is drawn once in a frame; nodes that the output does not need are not
// drawn. The second connection to the output wins.
TEST_F(Graph, DrawsANodeOnceHoweverManyReadIt) {
    Document document;
    document.kernel("copy", "a", copyBody).kernel("add", "ab", addBody);
    document.node("idle", "copy").node("n", "copy").node("sum", "add");
    document.wire("n.a=in idle.a=in sum.a=n sum.b=n =n =sum");
    const auto graph = fileGraph(document.text());
    EXPECT_EQ(drawnPixels(*graph), 2U * 16 * 9);
    const HostImage result = render(*graph);
    EXPECT_LE(largestError(result, times(3)), 1e-6F);
}

// A texture is reused only after its last reader: `n` is read before and after `half` and `b` are
// drawn. The number of textures depends on the graph's width, not on its length.
TEST_F(Graph, ReusesTexturesAfterTheirLastReader) {
    constexpr std::uint64_t texture = 16 * 9 * 16; // bytes
    Document crossing;
    crossing.kernel("copy", "a", copyBody).kernel("half", "a", copyBody + "dst *= 0.5;");
    crossing.kernel("add", "ab", addBody).node("n", "copy").node("h", "half").node("b", "copy");
    crossing.node("sum", "add");
    const auto graph = fileGraph(crossing.wire("n.a=in h.a=n b.a=h sum.a=b sum.b=n =sum").text());
    for (int frame = 0; frame < 2; ++frame) {
        textureBytes::start();
        const HostImage result = render(*graph);
        EXPECT_LE(largestError(result, times(2.5F)), 1e-6F);
        EXPECT_EQ(textureBytes::peak() / texture, 3U);
    }
    for (const int length : {2, 3, 12}) {
        Document chain;
        chain.kernel("copy", "a", copyBody).node("n0", "copy").wire("n0.a=in");
        for (int i = 1; i < length; ++i)
            chain.node("n" + std::to_string(i), "copy")
                .wire("n" + std::to_string(i) + ".a=n" + std::to_string(i - 1));
        const auto copies = fileGraph(chain.wire("=n" + std::to_string(length - 1)).text());
        textureBytes::start();
        EXPECT_EQ(largestError(render(*copies), input), 0);
        EXPECT_EQ(textureBytes::peak() / texture, 2U) << length;
    }
}

// With kept textures, a frame like the one before allocates no storage, and another size releases
// the old one.
TEST_F(Graph, KeepsTexturesBetweenFramesIfEnabled) {
    Document chain;
    chain.kernel("copy", "a", copyBody).node("x", "copy").node("y", "copy").node("z", "copy");
    const auto graph = fileGraph(chain.wire("x.a=in y.a=x z.a=y =z").text());
    graph->keepsTextures = true;
    unsigned seed = 0;
    const auto pixels = [&](unsigned x, unsigned y) { return testPattern(x, y, seed); };
    const auto storedBytes = [&](unsigned width, unsigned depth) {
        ++seed;
        std::vector<HostImage> images{HostImage(width, 9, depth, pixels)};
        textureBytes::start();
        EXPECT_LE(largestError(renderImages(*graph, images), pixels), 1e-4F) << seed;
        return textureBytes::peak();
    };
    EXPECT_EQ(storedBytes(16, 4), 2U * 16 * 9 * 16);
    EXPECT_EQ(storedBytes(16, 4), 0U);
    EXPECT_EQ(storedBytes(16, 1), 2U * 16 * 9 * 4 + 2 * 4); // two textures shrink to one pixel
    EXPECT_EQ(storedBytes(16, 1), 0U);
    EXPECT_EQ(storedBytes(8, 4), 2U * 8 * 9 * 16 + 2 * 4);
    EXPECT_EQ(storedBytes(8, 4), 0U);
}

// Pixels that a pass discards, however the discard is written, and pixels outside an image are
// transparent, even if the texture was used by another node of the frame before.
TEST_F(Graph, UnwrittenPixelsAreTransparent) {
    const auto white = [](unsigned, unsigned) { return Pixel{1, 1, 1, 1}; };
    const auto stripes = [](unsigned x, unsigned) {
        const float shown = x % 2 == 0 ? 1.0F : 0.0F;
        return Pixel{shown, shown, shown, shown};
    };
    for (const std::string word : {"discard", "JOIN(dis, card)", "dis\\\ncard"})
        for (const unsigned depth : {1U, 2U, 4U}) {
            Document document;
            document.kernel("copy", "a", copyBody).node("n", "copy").node("m", "drop");
            document.kernel("drop", "a",
                            copyBody + "if (mod(floor(outCoord().x), 2.0) == 1.0) { LEAVE; }",
                            "\n#define JOIN(a, b) a##b\n#ifdef tvek_VERTEX_SHADER\n#define LEAVE\n"
                            "#else\n#define LEAVE " +
                                word + "\n#endif\n");
            const auto graph = fileGraph(document.wire("n.a=in m.a=n =m").text());
            graph->keepsTextures = true;
            for (int frame = 0; frame < 2; ++frame) {
                std::vector<HostImage> images{HostImage(16, 9, depth, white)};
                EXPECT_EQ(largestError(renderImages(*graph, images), stripes), 0) << word << log();
            }
        }

    Document document;
    document.add("<inputImage type='image4' name='small'/>").kernel("copy", "a", copyBody);
    document.kernel("second", "ab", "dst = sampleNearest(b, outCoord());").node("n", "copy");
    document.node("last", "second").wire("n.a=in last.a=n =last");
    document.add("<connect fromImage='small' toNode='last' toInput='b'/>");
    const auto graph = fileGraph(document.text());
    struct Case {
        int left, top, right, bottom; // of the image, in a frame of 16 by 9
    };
    for (const Case& c : {Case{0, 0, 16, 8}, {0, 0, 15, 9}, {1, 0, 16, 9}, {0, -1, 16, 8}})
        for (const unsigned depth : {1U, 2U, 4U, 4U}) {
            HostImage whole(16, 9, depth, white);
            HostImage small(unsigned(c.right - c.left), unsigned(c.bottom - c.top), depth, white);
            HostImage output(16, 9, depth);
            graph->keepsTextures = !graph->keepsTextures;
            FrameDescription frame = frameFor(output);
            frame.images[0] = whole.slot(0);
            frame.images[1] = small.slot(1, c.left, c.top);
            renderFrame(*graph, frame, output);
            const auto expected = [&](unsigned x, unsigned y) {
                const bool isInside = int(x) >= c.left && int(x) < c.right && int(y) < c.bottom;
                return isInside ? Pixel{1, 1, 1, 1} : Pixel{};
            };
            EXPECT_EQ(largestError(output, expected), 0) << c.left << c.top << " at " << depth;
        }
}

// evaluateParameters sets parameters of two nodes from one; its name may be of any length.
TEST_F(Graph, PassesParametersToEveryNode) {
    const std::string name = "aParameterWithANameOfMoreThanThirtyOneBytes";
    Document document;
    document.add("<parameter name='" + name + "' type='float'>");
    document.add("<metadata name='defaultValue' value='1.5e1'/></parameter>");
    document.add("<parameter name='_bias' type='float2'><metadata name='displayName' value='B'/>"
                 "<metadata name='defaultValue' value='0.25, -2'/></parameter>");
    document.add("<parameter name='own' type='int'>"
                 "<metadata name='aeDisplayName' value='Mine'/></parameter>");
    document.kernel("scale", "a", "dst = k * sampleNearest(a, outCoord()) + float4(o, o);",
                    "parameter float k; parameter float2 o;");
    document.node("one", "scale",
                  "void evaluateParameters() { one::k = " + name +
                      " / 5.0; one::o = float2(0.0); }");
    document.node("two", "scale", "void evaluateParameters() { two::k = 2.0; two::o = _bias; }");
    const auto graph = fileGraph(document.wire("one.a=in two.a=one =two").text());
    EXPECT_STREQ(graph->parameters[0]->parameter.displayName.data(), name.substr(0, 31).c_str());
    EXPECT_STREQ(graph->parameters[1]->parameter.displayName.data(), "B");
    EXPECT_STREQ(graph->parameters[1]->parameter.name.data(), "_tveg_bias");
    EXPECT_STREQ(graph->parameters[2]->parameter.displayName.data(), "");
    const HostImage result = render(*graph);
    const auto expected = [](unsigned x, unsigned y) {
        const Pixel p = testPattern(x, y);
        return Pixel{6 * p[0] + 0.25F, 6 * p[1] - 2, 6 * p[2] + 0.25F, 6 * p[3] - 2};
    };
    EXPECT_LE(largestError(result, expected), 1e-5F) << log();
}

// Each node selects the filter of its inputs by the sampling functions it uses, and passes on the
// frame's pixel size. The third kernel reads at pixel centres, except in its parameter expressions.
TEST_F(Graph, FiltersForEachNodeAsItReads) {
    const std::string between = "sampleLinear(a, outCoord() + float2(0.5, 0.0))";
    Document document;
    document.kernel("copy", "a", copyBody).kernel("soft", "a", "dst = " + between + ";");
    document.kernel("given", "a", "dst = k + 0.0 * sampleNearest(a, outCoord());",
                    "parameter float4 k;");
    document.kernel("sum", "abc",
                    addBody + "dst += 4.0 * sampleNearest(c, outCoord()) + pixelSize(2).x;");
    document.node("one", "copy").node("two", "soft").node("sum", "sum");
    document.node("three", "given", "void evaluateParameters() { three::k = " + between + "; }");
    document.wire("one.a=in two.a=in three.a=in sum.a=one sum.b=two sum.c=three =sum");
    const auto graph = fileGraph(document.text());
    HostImage image(16, 9, 4, input);
    HostImage output(16, 9, 4);
    FrameDescription frame = frameFor(output);
    frame.pixelAspect = 1.25F;
    frame.images[0] = image.slot(0);
    renderFrame(*graph, frame, output);
    EXPECT_EQ(takeUploads(), 1); // for all three
    const auto expected = [](unsigned x, unsigned y) {
        const Pixel next = x == 15 ? Pixel{} : input(x + 1, y);
        Pixel p = input(x, y);
        for (std::size_t k = 0; k < 4; ++k)
            p[k] = p[k] + (2 + 4) * (p[k] + next[k]) / 2 + 1.25F;
        return p;
    };
    EXPECT_LE(largestError(output, expected), 1e-4F) << log();
}

// An image takes precedence over a node of the same name. Names in a graph are cut to 31 bytes,
// names in a kernel are not.
TEST_F(Graph, FindsNodesAndInputsByName) {
    const std::string name(40, 'x');
    Document document;
    document.add("<kernel><![CDATA[kernel long { input image4 " + name +
                 "; output pixel4 dst; void evaluatePixel() { dst = 2.0 * sampleNearest(" + name +
                 ", outCoord()); } }]]></kernel>");
    document.node("in", "long").node("n", "long");
    document.add("<connect fromImage='in' toNode='n' toInput='" + name + "'/>");
    const auto graph = fileGraph(document.wire("=n").text());
    const HostImage result = render(*graph);
    EXPECT_EQ(largestError(result, times(2)), 0);
}

// A connection can copy the input image to the output. The texture has the frame's size, which may
// exceed the output's: nothing outside the output may be written.
TEST_F(Graph, AnImageAsOutputStaysInsideTheOutput) {
    const auto graph = fileGraph(Document().wire("=in").text());
    for (const unsigned depth : {1U, 2U, 4U}) {
        HostImage image(20, 30, depth, input);
        HostImage output(7, 5, depth);
        FrameDescription frame = frameFor(output);
        frame.width = 20;
        frame.height = 30;
        frame.images[0] = image.slot(0);
        renderFrame(*graph, frame, output);
        // This copy reverses the four channels.
        const auto reversed = [](unsigned x, unsigned y) {
            const Pixel p = testPattern(x, y);
            return Pixel{p[1], p[0], p[3], p[2]};
        };
        EXPECT_LE(largestError(output, reversed), depth == 2 ? 1.01F / 32768 : 0) << depth;
    }
}

// Unconnected inputs are transparent, and connections that cannot be resolved are ignored.
TEST_F(Graph, UnconnectedInputsAreTransparent) {
    Document document;
    document.kernel("add", "ab", addBody + "dst += 0.125;").node("n", "add");
    const auto graph = fileGraph(document.wire("n.a=unknown n.x=in unknown.a=in =n").text());
    ASSERT_TRUE(isRunnable(*graph));
    const HostImage result = render(*graph);
    const auto expected = [](unsigned, unsigned) { return Pixel{0.125F, 0.125F, 0.125F, 0.125F}; };
    EXPECT_EQ(largestError(result, expected), 0);
}

TEST_F(Graph, RejectsGraphsThatCannotRun) {
    const std::string cycle = "Cyclick Dependency detected.\ng\n";
    const std::tuple<const char*, std::string, bool> cases[] = {
        // connections, messages, whether it runs
        {"x.a=in", "No output node.\ng\n", false},
        {"=unknown", "", false},
        {"x.b=x =x", cycle, false},
        {"y.a=x x.b=y =x", cycle, false},
        {"y.a=x x.b=y z.a=x =z", cycle, false}, // after the output
        {"y.a=x x.b=y =z", "", true},           // not connected to the output
        {"=many", "Too many inputs.\ng\n", false},
    };
    std::string before;
    for (const auto& [wires, message, runs] : cases) {
        Document document;
        document.kernel("add", "ab", addBody).node("x", "add").node("y", "add").node("z", "add");
        if (message.starts_with("Too many"))
            document.kernel("nine", "abcdefghi", "dst = float4(0.0);").node("many", "nine");
        const auto graph = fileGraph(document.wire(wires).text());
        EXPECT_EQ(isRunnable(*graph), runs) << wires;
        EXPECT_EQ(info().substr(before.size()), message) << wires;
        before = info();
    }
}

// Each node reads the one before it twice: visiting a node more than once would take exponential
// time.
TEST_F(Graph, SharedAndLongChainsRunInLinearTime) {
    for (const int length : {40, 1000}) {
        const std::string kernel = length == 40 ? "half" : "copy";
        Document document;
        document.kernel("half", "ab", addBody + "dst *= 1.0 / 3.0;").kernel("copy", "a", copyBody);
        std::string last = "in";
        for (int i = 0; i < length; ++i) {
            const std::string id = "n" + std::to_string(i);
            document.node(id, kernel).wire(id + ".a=" + last + " " + id + ".b=" + last);
            last = id;
        }
        const auto graph = fileGraph(document.wire("=" + last).text());
        EXPECT_EQ(drawnPixels(*graph), static_cast<GLuint>(length) * 16 * 9);
        const HostImage result = render(*graph);
        EXPECT_LE(largestError(result, input), 1e-5F) << length;
    }
}

// If any host allocation fails, the command returns its code and nothing stays allocated.
TEST_F(Graph, ReportsEveryFailedAllocation) {
    Document document;
    document.add("<parameter name='aLongNameForAParameter' type='float'/>");
    document.kernel("copy", "a", copyBody).node("n", "copy");
    const std::string text = document.wire("n.a=in =n").text();
    EXPECT_GT(failEveryAllocation([&] { fileGraph(text); }), 20U);
}

} // namespace
