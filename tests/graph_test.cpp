// Graph files through the engine: wiring, order, cycles, and pixels against the kernels one by one.

#include <GL/glew.h>

#include "hostkit/memory.h"
#include "tests/support/engine_fixture.h"

namespace {

// Documents for tests, put together piece by piece.
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
        return add("<node id='" + id + "' name='" + kernelName + "'><evaluateParameters><![CDATA[" +
                   evaluateParameters + "]]></evaluateParameters></node>");
    }
    // From an image when the source begins with '@'.
    Document& connect(const std::string& from, const std::string& to, const std::string& input) {
        return add("<connect " + source(from) + " toNode='" + to + "' toInput='" + input + "'/>");
    }
    Document& output(const std::string& from) {
        return add("<connect " + source(from) + " toImage='result'/>");
    }
    std::string text() const {
        return "<graph name='g'><inputImage type='image4' name='in'/>" + text_ + "</graph>";
    }

private:
    static std::string source(const std::string& from) {
        return from[0] == '@' ? "fromImage='" + from.substr(1) + "'"
                              : "fromNode='" + from + "' fromOutput='dst'";
    }

    std::string text_;
};

const std::string copyBody = "dst = sampleNearest(a, outCoord());";

class Graph : public EngineTest {
protected:
    HostImage render(pbGraph& graph) {
        std::vector<HostImage> images{HostImage(16, 9, 4, input)};
        return renderImages(graph, images);
    }

    // The pixels that all passes of one frame draw together.
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
};

// A chain gives to the last bit what its kernels give one after another, values beyond 0 to 1 kept.
TEST_F(Graph, ChainEqualsTheKernelsInTurn) {
    const std::string grow = "dst = sample(a, outCoord()) * 3.7 - 1.3;";
    const std::string bend = "pixel4 p = sample(a, outCoord()); dst = p * p + 0.1;";
    const auto graph = fileGraph(Document()
                                     .kernel("grow", "a", grow)
                                     .kernel("bend", "a", bend)
                                     .node("first", "grow")
                                     .node("second", "bend")
                                     .connect("@in", "first", "a")
                                     .connect("first", "second", "a")
                                     .output("second")
                                     .text());
    const HostImage whole = render(*graph);
    const auto growKernel = kernelGraph("kernel g {input image4 a; output pixel4 dst; "
                                        "void evaluatePixel() {" +
                                        grow + "}}");
    const auto bendKernel = kernelGraph("kernel b {input image4 a; output pixel4 dst; "
                                        "void evaluatePixel() {" +
                                        bend + "}}");
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

// Both branches read the same node; it and everything else is drawn once in a frame.
TEST_F(Graph, DrawsANodeOnceHoweverManyReadIt) {
    const auto graph = fileGraph(Document()
                                     .kernel("copy", "a", copyBody)
                                     .kernel("add", "ab",
                                             "dst = sampleNearest(a, outCoord()) + "
                                             "2.0 * sampleNearest(b, outCoord());")
                                     .node("idle", "copy")
                                     .node("n", "copy")
                                     .node("sum", "add")
                                     .connect("@in", "n", "a")
                                     .connect("@in", "idle", "a")
                                     .connect("n", "sum", "a")
                                     .connect("n", "sum", "b")
                                     .output("n")
                                     .output("sum")
                                     .text());
    EXPECT_EQ(drawnPixels(*graph), 2U * 16 * 9);
    const HostImage result = render(*graph);
    EXPECT_LE(largestError(result,
                           [](unsigned x, unsigned y) {
                               Pixel p = testPattern(x, y);
                               for (float& channel : p)
                                   channel *= 3;
                               return p;
                           }),
              1e-6F);
}

// evaluateParameters feeds two nodes from one parameter; its name may be as long as it likes.
TEST_F(Graph, ParametersReachEveryNode) {
    const std::string name = "aParameterWithANameOfMoreThanThirtyOneBytes";
    const auto graph = fileGraph(
        Document()
            .add("<parameter name='" + name +
                 "' type='float'>"
                 "<metadata name='defaultValue' value='1.5e1'/></parameter>"
                 "<parameter name='_bias' type='float2'><metadata name='displayName' value='B'/>"
                 "<metadata name='defaultValue' value='0.25, -2'/></parameter>")
            .kernel("scale", "a", "dst = k * sampleNearest(a, outCoord()) + float4(o, o);",
                    "parameter float k; parameter float2 o;")
            .node("one", "scale",
                  "void evaluateParameters() { one::k = " + name +
                      " / 5.0; "
                      "one::o = float2(0.0, 0.0); }")
            .node("two", "scale", "void evaluateParameters() { two::k = 2.0; two::o = _bias; }")
            .connect("@in", "one", "a")
            .connect("one", "two", "a")
            .output("two")
            .text());
    EXPECT_STREQ(graph->parameters[0]->parameter.displayName.data(),
                 "aParameterWithANameOfMoreThanTh");
    EXPECT_STREQ(graph->parameters[1]->parameter.displayName.data(), "B");
    EXPECT_STREQ(graph->parameters[1]->parameter.name.data(), "_tveg_bias");
    const HostImage result = render(*graph);
    EXPECT_LE(largestError(
                  result,
                  [](unsigned x, unsigned y) {
                      const Pixel p = testPattern(x, y);
                      return Pixel{6 * p[0] + 0.25F, 6 * p[1] - 2, 6 * p[2] + 0.25F, 6 * p[3] - 2};
                  }),
              1e-5F)
        << log();
}

// The input's image goes straight out when a connection says so. The texture has the frame's size,
// which may exceed the output's: nothing outside the output may be written.
TEST_F(Graph, AnImageAsOutputStaysInsideTheOutput) {
    const auto graph = fileGraph(Document().output("@in").text());
    ASSERT_TRUE(isRunnable(*graph));
    for (const unsigned depth : {1U, 2U, 4U}) {
        HostImage image(20, 30, depth, input);
        HostImage output(7, 5, depth);
        FrameDescription frame = frameFor(output);
        frame.width = 20;
        frame.height = 30;
        frame.images[0] = image.slot(0);
        renderFrame(*graph, frame, output);
        // This road reads the four channels back in the opposite order.
        EXPECT_LE(largestError(output,
                               [](unsigned x, unsigned y) {
                                   const Pixel p = testPattern(x, y);
                                   return Pixel{p[1], p[0], p[3], p[2]};
                               }),
                  depth == 2 ? 1.01F / 32768 : 0)
            << depth;
    }
}

// What nothing feeds is transparent, and never followed; what cannot be resolved is passed over.
TEST_F(Graph, OpenInputsAreTransparent) {
    const auto graph = fileGraph(Document()
                                     .kernel("add", "ab",
                                             "dst = sample(a, outCoord()) + "
                                             "sample(b, outCoord() * 0.5) + 0.125;")
                                     .node("n", "add")
                                     .connect("nobody", "n", "a")
                                     .connect("@in", "n", "nothing")
                                     .connect("@in", "nobody", "a")
                                     .output("n")
                                     .text());
    ASSERT_TRUE(isRunnable(*graph));
    const HostImage result = render(*graph);
    EXPECT_EQ(largestError(result,
                           [](unsigned, unsigned) {
                               return Pixel{0.125F, 0.125F, 0.125F, 0.125F};
                           }),
              0);
}

TEST_F(Graph, RefusesWhatCannotRun) {
    const std::string add = "dst = sample(a, outCoord()) + sample(b, outCoord());";
    const std::string cycle = "Cyclick Dependency detected.\ng\n";
    const auto nodes =
        Document().kernel("add", "ab", add).node("x", "add").node("y", "add").node("z", "add");
    struct Case {
        const char* what;
        std::string text;
        std::string told;
        bool isRunnable;
    };
    const std::vector<Case> cases = {
        {"no output", Document(nodes).text(), "No output node.\ng\n", false},
        {"output from nowhere", Document(nodes).output("nobody").text(), "", false},
        {"itself", Document(nodes).connect("x", "x", "b").output("x").text(), cycle, false},
        {"through others",
         Document(nodes).connect("x", "y", "a").connect("y", "x", "b").output("x").text(), cycle,
         false},
        {"a cycle behind the output",
         Document(nodes)
             .connect("x", "y", "a")
             .connect("y", "x", "b")
             .connect("x", "z", "a")
             .output("z")
             .text(),
         cycle, false},
        {"a cycle elsewhere",
         Document(nodes).connect("x", "y", "a").connect("y", "x", "b").output("z").text(), "",
         true},
        {"too many inputs",
         Document()
             .kernel("many", "abcdefghi", "dst = float4(0.0);")
             .node("n", "many")
             .output("n")
             .text(),
         "Too many inputs.\ng\n", false},
        {"no graph", "<notagraph/>", "No output node.\n\n", false},
    };
    std::string before;
    for (const Case& c : cases) {
        const auto graph = fileGraph(c.text);
        EXPECT_EQ(isRunnable(*graph), c.isRunnable) << c.what;
        EXPECT_EQ(info().substr(before.size()), c.told) << c.what;
        before = info();
    }
}

// Each node reads the one before it twice: a second look at any would never end.
TEST_F(Graph, LaddersAndLongChainsRunAtOnce) {
    Document ladder;
    ladder.kernel("half", "ab",
                  "dst = 0.5 * (sampleNearest(a, outCoord()) + "
                  "sampleNearest(b, outCoord()));");
    ladder.node("n0", "half").connect("@in", "n0", "a").connect("@in", "n0", "b");
    for (int i = 1; i < 40; ++i) {
        const std::string id = "n" + std::to_string(i);
        const std::string last = "n" + std::to_string(i - 1);
        ladder.node(id, "half").connect(last, id, "a").connect(last, id, "b");
    }
    const auto graph = fileGraph(ladder.output("n39").text());
    const HostImage result = render(*graph);
    EXPECT_EQ(largestError(result, input), 0);

    Document chain;
    chain.kernel("copy", "a", copyBody).node("n0", "copy").connect("@in", "n0", "a");
    for (int i = 1; i < 1000; ++i)
        chain.node("n" + std::to_string(i), "copy")
            .connect("n" + std::to_string(i - 1), "n" + std::to_string(i), "a");
    const auto longGraph = fileGraph(chain.output("n999").text());
    EXPECT_EQ(drawnPixels(*longGraph), 1000U * 16 * 9);
}

// A node without its kernel tells so by a program that fails, and the rest of the graph runs.
TEST_F(Graph, ANodeWithoutAKernelLeavesTheGraphRunning) {
    const auto graph = fileGraph(Document()
                                     .kernel("copy", "a", copyBody)
                                     .node("lost", "missing")
                                     .node("n", "copy")
                                     .connect("@in", "n", "a")
                                     .output("n")
                                     .text());
    ASSERT_TRUE(isRunnable(*graph));
    EXPECT_TRUE(graph->nodes[1]->connections.empty());
    const HostImage result = render(*graph);
    EXPECT_EQ(largestError(result, input), 0);
}

// At whichever allocation the host's memory ends, the command ends with its code and nothing is
// kept.
TEST_F(Graph, RunsOutOfMemoryInAnOrderlyWay) {
    const std::string text = Document()
                                 .add("<parameter name='aLongNameForAParameter' type='float'/>")
                                 .kernel("copy", "a", copyBody)
                                 .node("n", "copy")
                                 .connect("@in", "n", "a")
                                 .output("n")
                                 .text();
    const std::size_t live = hostkit::memory::liveHandles();
    bool isBuilt = false;
    for (std::uint64_t count = 0; !isBuilt; ++count) {
        ASSERT_LT(count, 2000U);
        hostkit::memory::setHandlesLeft(count);
        try {
            fileGraph(text);
            isBuilt = true;
        } catch (long code) {
            EXPECT_EQ(code, 4);
        }
        hostkit::memory::setHandlesLeft(hostkit::memory::noLimit);
        ASSERT_EQ(hostkit::memory::liveHandles(), live) << count;
    }
}

} // namespace
