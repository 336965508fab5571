// The texts that go to the GLSL compiler, whole.
#include <set>
#include <string>

#include "engine/channel_order.h"
#include "engine/glsl_generator.h"
#include "engine/glsl_texts.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"
#include "tests/support/running_command.h"

namespace {

struct Texts {
    std::string vertex;
    std::string fragment;
};

Texts standaloneTexts(const pbKernelInfo& kernel, std::uint32_t swizzle = 0) {
    NarrowString vertex("old");
    NarrowString fragment("old");
    EXPECT_EQ(generateKernelShaders(kernel, vertex, fragment, swizzle), 0);
    return {std::string(vertex), std::string(fragment)};
}

Texts standaloneTexts(const std::string& body, std::uint32_t swizzle = 0) {
    pbKernelInfo kernel;
    PBKParser("kernel K {" + body + "}", kernel).parseKernel();
    return standaloneTexts(kernel, swizzle);
}

std::string mainOf(const std::string& text) {
    return text.substr(text.find("\nvoid main(void)\n"));
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.ends_with(end);
}

class GeneratorTest : public RunningCommand {};

// Kernels depend on each byte: a change of a fixed text must be meant.
TEST_F(GeneratorTest, hasTheFixedTexts) {
    const auto fingerprint = [](std::string_view text) { // FNV-1a
        std::uint64_t hash = 0xcbf29ce484222325;
        for (const char c : text)
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        return hash;
    };
    EXPECT_EQ(glslDefinitions.size(), 611U);
    EXPECT_EQ(glslPrelude.size(), 2181U);
    EXPECT_EQ(fingerprint(glslDefinitions), 0x233c931972c919u);
    EXPECT_EQ(fingerprint(glslPrelude), 0x17ec52f364309b05u);
}

TEST_F(GeneratorTest, writesAStandaloneKernel) {
    const Texts texts = standaloneTexts(
        "input image4 src; output pixel4 dst;\nparameter float amount <defaultValue: 0.5;>;\n"
        "void evaluatePixel() { dst = amount * sample(src, outCoord()); }",
        hostChannelOrder);
    const std::string common =
        "#define parameter uniform\n#define tvek__INPUT_MAX 1\n#define tvek_SWIZZLE_IN .gbar\n" +
        std::string(glslDefinitions) + "\n" + std::string(glslPrelude) +
        "\n\ninput image4 src; output pixel4 dst;\nparameter float amount;\n"
        "void evaluatePixel() { dst = amount * sample(src, outCoord()); }\n\n";
    EXPECT_EQ(texts.vertex, "\n#define tvek_VERTEX_SHADER\n" + common +
                                "\nvoid main(void)\n{\n\ttvek_vertexPosition = gl_Vertex;\n"
                                "\tgl_Position = ftransform();\n}\n");
    EXPECT_EQ(texts.fragment, common + "\nvoid main(void)\n{\n\tevaluatePixel();\n"
                                       "\tgl_FragColor = dst.argb;\n}\n");
}

TEST_F(GeneratorTest, writesANodeOfAGraph) {
    pbGraphInfo graph;
    ASSERT_EQ(readGraphText("<graph><parameter name='amount' type='float2'/>"
                            "<parameter name='_bias' type='int'/>"
                            "<kernel>kernel Other {other}</kernel>"
                            "<kernel><![CDATA[kernel K {output pixel4 o;dependent int n;"
                            "void evaluateDependents(){n=1;}}]]></kernel>"
                            "<kernel>kernel K {second}</kernel>"
                            "<node id='k' name='K'><evaluateParameters>void evaluateParameters(){"
                            "k::x = amount.x;}</evaluateParameters></node></graph>",
                            graph),
              0);
    NarrowString vertex;
    NarrowString fragment;
    ASSERT_EQ(generateNodeShaders(graph, 0, vertex, fragment, 0), 0);
    const std::string common =
        "#define parameter\n#define tvek__INPUT_MAX 1\n#define tvek_SWIZZLE_IN .rgba\n" +
        std::string(glslDefinitions) + "\n" + std::string(glslPrelude) +
        "\n\noutput pixel4 o;dependent int n;void evaluateDependents(){\n"
        "#ifdef tvek_VERTEX_SHADER\nn=1;\n#endif\n}\n\nvarying float tvek_n;\n"
        "uniform float2 tveg_amount;\nuniform int _tveg_bias;\n"
        "void evaluateParameters(){x = tveg_amount.x;}";
    EXPECT_EQ(std::string(vertex),
              "\n#define tvek_VERTEX_SHADER\n" + common +
                  "\nvoid main(void)\n{\n\tevaluateParameters();\n\tevaluateDependents();\n"
                  "\ttvek_n = float(n);\n\ttvek_vertexPosition = gl_Vertex;\n"
                  "\tgl_Position = ftransform();\n}\n");
    EXPECT_EQ(std::string(fragment),
              common + "\nvoid main(void)\n{\n\tevaluateParameters();\n\tn = int(tvek_n);\n"
                       "\tevaluatePixel();\n\tgl_FragColor = o.rgba;\n}\n");
}

TEST_F(GeneratorTest, calculatesANodesParametersEvenWithoutExpressions) {
    pbGraphInfo graph;
    ASSERT_EQ(readGraphText("<graph><kernel>kernel K {}</kernel><node name='K'/>"
                            "<node name='k'/></graph>",
                            graph),
              0);
    NarrowString vertex("as it came");
    NarrowString fragment("as it came");
    EXPECT_EQ(generateNodeShaders(graph, 1, vertex, fragment, 0), -1);
    EXPECT_EQ(vertex, "as it came");
    EXPECT_EQ(fragment, "as it came");
    EXPECT_EQ(generateNodeShaders(graph, 0, vertex, fragment, 0), 0);
    EXPECT_FALSE(contains(mainOf(std::string(vertex)), "evaluateParameters"));
    EXPECT_TRUE(
        contains(std::string(fragment), "\n\n\n\nvoid evaluateParameters(){}\n\nvoid main"));
    EXPECT_TRUE(contains(mainOf(std::string(fragment)), "\tevaluateParameters();\n"));
}

TEST_F(GeneratorTest, carriesIntegersAndTruthsAsFloats) {
    struct Case {
        const char* type;
        const char* name;
        const char* varying; // empty: travels as it is
        const char* toVarying;
        const char* fromVarying;
    };
    const Case cases[] = {
        {"int", "_k", "varying float _tvek_k;\n", "_tvek_k = float(_k)", "_k = int(_tvek_k)"},
        {"int2", "n", "varying vec2 tvek_n;\n", "tvek_n = vec2(n)", "n = int2(tvek_n)"},
        {"bool", "b", "varying float tvek_b;\n", "tvek_b = float(b)", "b = bool(tvek_b)"},
        {"bool4", "b", "varying vec4 tvek_b;\n", "tvek_b = vec4(b)", "b = bool4(tvek_b)"},
        {"float2", "d", "", "", ""},
        {"float4x4", "d", "", "", ""},
    };
    for (const Case& each : cases) {
        const auto line = [](const std::string& text) {
            return text.empty() ? text : "\t" + text + ";\n";
        };
        const Texts texts =
            standaloneTexts(std::string("dependent ") + each.type + " " + each.name + ";");
        const std::string start = std::string(";\n\n") + each.varying + "\nvoid main(void)\n{\n";
        EXPECT_PRED2(endsWith, texts.vertex,
                     start + "\tevaluateDependents();\n" + line(each.toVarying) +
                         "\ttvek_vertexPosition = gl_Vertex;\n\tgl_Position = ftransform();\n}\n");
        EXPECT_PRED2(endsWith, texts.fragment,
                     start + line(each.fromVarying) +
                         "\tevaluatePixel();\n\tgl_FragColor = .rgba;\n}\n");
    }
}

TEST_F(GeneratorTest, countsInputs) {
    pbKernelInfo kernel;
    for (const char* digit : {"1", "1", "2", "3", "4", "5", "6", "7", "8", "", ""}) {
        EXPECT_TRUE(contains(standaloneTexts(kernel).vertex,
                             ("\n#define tvek__INPUT_MAX " + std::string(digit) + "\n").c_str()))
            << kernel.inputs.size();
        kernel.inputs.emplace_back(pbTypeImage4, "i");
    }
}

// Applied as GLSL does: component i of the result is the named component of the source.
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
    // Alpha, red, green, blue in memory, seen as r, g, b, a.
    EXPECT_EQ(swizzled("ARGB", channelOrders[hostChannelOrder].in), "RGBA");

    const Texts last = standaloneTexts("output pixel4 o;", 23);
    EXPECT_TRUE(contains(last.vertex, "\n#define tvek_SWIZZLE_IN .abgr\n"));
    EXPECT_TRUE(contains(last.fragment, "\tgl_FragColor = o.abgr;\n"));
    const Texts beyond = standaloneTexts("output pixel4 o;", 24);
    EXPECT_FALSE(contains(beyond.vertex, "#define tvek_SWIZZLE_IN"));
    EXPECT_TRUE(contains(beyond.fragment, "\tgl_FragColor = o;\n"));
}

} // namespace
