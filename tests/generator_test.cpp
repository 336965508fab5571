// The generated GLSL, compared as a whole.
#include <set>
#include <string>
#include <utility>

#include "engine/pixels/channel_order.h"
#include "engine/program/glsl_generator.h"
#include "engine/program/glsl_texts.h"
#include "engine/program/varying_count.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"
#include "tests/support/running_command.h"

namespace {

struct Texts {
    std::string vertex;
    std::string fragment;
};

Texts standaloneTexts(const std::string& body, std::uint32_t swizzle = 0) {
    pbKernelInfo kernel;
    PBKParser("kernel K {" + body + "}", kernel).parseKernel();
    NarrowString vertex("old");
    NarrowString fragment("old");
    EXPECT_EQ(generateKernelShaders(kernel, vertex, fragment, swizzle), 0);
    return {std::string(vertex), std::string(fragment)};
}

class GeneratorTest : public RunningCommand {};

TEST_F(GeneratorTest, writesAStandaloneKernel) {
    const Texts texts = standaloneTexts(
        "input image4 src, b, c; output pixel4 dst;\nparameter float amount <defaultValue: 0.5;>;\n"
        "void evaluatePixel() { dst = amount * sample(src, outCoord()); }",
        hostSwizzle);
    const std::string common =
        "#define parameter uniform\n#define tvek__INPUT_MAX 3\n#define tvek_SWIZZLE_IN .gbar\n" +
        std::string(glslDefinitions) + "\n" + std::string(glslPrelude) +
        "\n\ninput image4 src, b, c; output pixel4 dst;\nparameter float amount;\n"
        "void evaluatePixel() { dst = amount * sample(src, outCoord()); }\n\n";
    EXPECT_EQ(texts.vertex, "\n#define tvek_VERTEX_SHADER\n" + common +
                                "\nvoid main(void)\n{\n\ttvek_vertexPosition = gl_Vertex;\n"
                                "\tgl_Position = ftransform();\n}\n");
    EXPECT_EQ(texts.fragment, common + "\nvoid main(void)\n{\n\tevaluatePixel();\n"
                                       "\tgl_FragColor = dst.argb;\n}\n");
    const Texts most = standaloneTexts("input image4 a, b, c, d, e, f, g, h;");
    EXPECT_NE(most.vertex.find("#define tvek__INPUT_MAX 8\n"), std::string::npos);
}

// Integers and booleans are passed as floats.
TEST_F(GeneratorTest, writesANodeOfAGraph) {
    const std::string dependents = "dependent int _n;dependent bool b;dependent int2 m;"
                                   "dependent bool4 c;dependent";
    pbGraphInfo graph;
    readGraphText("<graph><parameter name='amount' type='float2'/>"
                  "<parameter name='_bias' type='int'/><kernel>kernel Other {other}</kernel>"
                  "<kernel>kernel K {output pixel4 o;" +
                      dependents +
                      " float4x4 d;"
                      "void evaluateDependents(){m=1;}}</kernel><kernel>kernel K {second}</kernel>"
                      "<node id='k' name='K'><evaluateParameters>void evaluateParameters(){"
                      "k::x = amount.x;}</evaluateParameters></node><node name='Other'/></graph>",
                  graph);
    NarrowString vertex;
    NarrowString fragment;
    ASSERT_EQ(generateNodeShaders(graph, 0, vertex, fragment, 0), 0);
    const std::string common =
        "#define parameter\n#define tvek__INPUT_MAX 1\n#define tvek_SWIZZLE_IN .rgba\n" +
        std::string(glslDefinitions) + "\n" + std::string(glslPrelude) + "\n\noutput pixel4 o;" +
        dependents +
        " varying float4x4 d;void evaluateDependents(){\n"
        "#ifdef tvek_VERTEX_SHADER\nm=1;\n#endif\n}\n\nvarying float _tvek_n;\n"
        "varying float tvek_b;\nvarying vec2 tvek_m;\nvarying vec4 tvek_c;\n"
        "uniform float2 tveg_amount;\nuniform int _tveg_bias;\n"
        "void evaluateParameters(){x = tveg_amount.x;}\nvoid main(void)\n{\n"
        "\tevaluateParameters();\n";
    EXPECT_EQ(std::string(vertex),
              "\n#define tvek_VERTEX_SHADER\n" + common +
                  "\tevaluateDependents();\n"
                  "\t_tvek_n = float(_n);\n\ttvek_b = float(b);\n\ttvek_m = vec2(m);\n"
                  "\ttvek_c = vec4(c);\n\ttvek_vertexPosition = gl_Vertex;\n"
                  "\tgl_Position = ftransform();\n}\n");
    EXPECT_EQ(std::string(fragment),
              common + "\t_n = int(_tvek_n);\n\tb = bool(tvek_b);\n\tm = int2(tvek_m);\n"
                       "\tc = bool4(tvek_c);\n\tevaluatePixel();\n\tgl_FragColor = o.rgba;\n}\n");
    // Without dependents, the vertex shader has no parameters.
    EXPECT_EQ(generateNodeShaders(graph, 1, vertex, fragment, 0), 0);
    EXPECT_TRUE(std::string(vertex).ends_with("void evaluateParameters(){}\n\nvoid main(void)\n{\n"
                                              "\ttvek_vertexPosition = gl_Vertex;\n"
                                              "\tgl_Position = ftransform();\n}\n"));
}

TEST_F(GeneratorTest, countsTheVaryingsThatAreRead) {
    const std::pair<const char*, std::int64_t> cases[] = {
        {"void evaluatePixel() { o = float4(0.0); }", 0},
        {"void evaluatePixel() { o = outCoord().xyxy; }", 4},
        {"dependent float a, b; dependent pixel3 c; void evaluatePixel() { o.rgb = a * c; }", 4},
        {"dependent float3x3 m[2]; varying vec2 v; void evaluatePixel() { f(m, v); }", 20},
        {"dependent int n; dependent bool4 t; void evaluatePixel() {}", 5}, // main reads them
        {"dependent float a[9]; void evaluateDependents() { if (true) { a[0] = 1.0; } }", 0},
        {"dependent float a[9]; void evaluateDependents() {}\n#define all a\n", 9},
        {"\n#define N (2 * 24 + M)\n#define M 16\nconst int one = 1, k = N - one / 1;"
         "dependent float4x4 d[k]; void evaluatePixel() { d; }",
         63 * 16},
        {"dependent float a[N], b[1 / 0], c[4 4]; void evaluatePixel() { a; b; c; }", 3},
        {"\n#define A B+B\n#define B A+A\ndependent float a[A]; void f() { a; }", 1},
        {"dependent float a[999999 * 999999], b[1 - 99]; void f() { a; b; }", 2147483648},
    };
    for (const auto& [body, components] : cases) {
        const Texts texts = standaloneTexts(std::string("output pixel4 o;") + body);
        EXPECT_EQ(countVaryingComponents(texts.fragment), components) << body;
    }
}

// GLSL's swizzle: component i of the result is the named component of the source.
std::string swizzled(const std::string& source, const std::string& swizzle) {
    std::string result;
    for (const char component : swizzle.substr(1))
        result += source[std::string("rgba").find(component)];
    return result;
}

TEST_F(GeneratorTest, undoesEachChannelOrder) {
    std::set<std::string> orders;
    for (const ChannelOrder& order : channelOrders) {
        EXPECT_EQ(swizzled(swizzled("0123", order.in), order.out), "0123") << order.in;
        orders.insert(order.in);
    }
    EXPECT_EQ(orders.size(), 24U);
    // Memory order alpha, red, green, blue, read as r, g, b, a.
    EXPECT_EQ(swizzled("ARGB", channelOrders[hostSwizzle].in), "RGBA");
    const Texts beyond = standaloneTexts("output pixel4 o;", 24);
    EXPECT_EQ(beyond.vertex.find("#define tvek_SWIZZLE_IN"), std::string::npos);
    EXPECT_TRUE(beyond.fragment.ends_with("\tgl_FragColor = o;\n}\n"));
}

} // namespace
