// Parameter values passed to the shader, and the description of a graph.

#include "tests/support/engine_fixture.h"

namespace {

class Parameters : public EngineTest {
protected:
    // The pixel of a kernel without inputs.
    Pixel pixelOf(pbGraph& graph) {
        HostImage output(1, 1, 4);
        renderFrame(graph, frameFor(output), output);
        return output.at(0, 0);
    }

    std::unique_ptr<pbGraph> generator(const std::string& declaration, const std::string& value) {
        return kernelGraph("kernel Test { output pixel4 dst; parameter " + declaration +
                           "; void evaluatePixel() { dst = " + value + "; } }");
    }
};

// Each default is passed by the uniform call of its control, parameterType or type. The controls'
// own values are tested elsewhere.
TEST_F(Parameters, DefaultsArePassedToTheShader) {
    const std::tuple<const char*, const char*, Pixel> cases[] = {
        // parameter p, pixel, expected values
        {"int3 p<defaultValue:int3(1,-2,3);>", "float4(float3(p), 0.0)", {1, -2, 3, 0}},
        {"pixel3 p<defaultValue:pixel3(1,2,3);>", "float4(p, 4.0)", {1, 2, 3, 4}},
        {"float4 p<defaultValue:float4(1,2,3,4);>", "p", {1, 2, 3, 4}},
        {"float2x2 p<defaultValue:float2x2(1,2,3,4);>", "float4(p[0], p[1])", {1, 2, 3, 4}},
        {"float3x3 p<defaultValue:1,2,3,4,5,6,7,8,9;>", "float4(p[2], p[0][1])", {7, 8, 9, 2}},
        {"bool p<defaultValue:true;>", "float4(p ? 1.0 : 0.0)", {1, 1, 1, 1}},
        {"bool4 p<defaultValue:bool4(false,true,false,true);>", "float4(p)", {0, 1, 0, 1}},
        {"float3 p<defaultValue:1,2,3; aeUIControl:\"aeColor\";>", "float4(p, 0.0)", {1, 2, 3, 0}},
        {"pixel4 p<defaultValue:1,2,3,4; aeUIControl:\"aeColor\";>", "p", {1, 2, 3, 4}},
        {"pixel3 p<defaultValue:1,2,3; aeUIControl:\"aeColor\";>", "float4(p, 0.0)", {1, 2, 3, 0}},
        // aeUIControl takes precedence over parameterType.
        {"int p<defaultValue:2; aeUIControl:\"aePopup\"; parameterType:\"angleDegrees\";>",
         "float4(float(p))",
         {2, 2, 2, 2}},
        // An integer is not sent to a popup's float, and a colour control sends nothing to a single
        // number; the frame renders anyway.
        {"float p<defaultValue:0.5; aeUIControl:\"aePopup\";>", "float4(p)", {0, 0, 0, 0}},
        {"float p<defaultValue:0.5; aeUIControl:\"aeColor\";>", "float4(p)", {0, 0, 0, 0}},
        // The name field holds 31 bytes, but the uniform has the whole name.
        {"float aNameThatIsTooLongForTheNameFieldOfTheModel<defaultValue:-7.5;>",
         "float4(aNameThatIsTooLongForTheNameFieldOfTheModel)",
         {-7.5F, -7.5F, -7.5F, -7.5F}},
        {"float p", "float4(p)", {0, 0, 0, 0}},
    };
    for (const auto& [declaration, value, expected] : cases) {
        const auto graph = generator(declaration, value);
        EXPECT_EQ(pixelOf(*graph), expected) << declaration << log();
        EXPECT_EQ(graph->frameError, 0U) << declaration;
    }
}

// Integer and boolean dependents are passed as floats; all are computed before the pixels.
TEST_F(Parameters, DependentsArePassedToEachPixel) {
    const auto graph = kernelGraph(
        "kernel Test { output pixel4 dst; parameter float p<defaultValue:3.0;>;"
        "dependent int n, _m; dependent bool b; dependent float2 f;"
        "void evaluateDependents() { n = int(p) + 1; _m = -2; b = p > 2.0; f = float2(p, p * p); }"
        "void evaluatePixel() { dst = float4(float(n), float(_m), b ? f.x : 0.0, f.y); } }");
    EXPECT_EQ(pixelOf(*graph), (Pixel{4, -2, 3, 9})) << log();
}

TEST_F(Parameters, DescribesAnEmptyGraph) {
    const auto empty = fileGraph("<graph/>");
    EXPECT_EQ(std::string(empty->infoText), "Pixel Bender Graph : -\nversion : 0\nVendor : -\n\n");
    EXPECT_EQ(info(), "No output node.\n\n");
}

TEST_F(Parameters, DumpsNodesAndParameters) {
    const auto graph = kernelGraph(kernelText(
        "parameter float2 f<defaultValue:float2(1.0,2.0); maxValue:float2(340282346638528859811704"
        "183484516925440.0, 0.5);>; parameter bool2 b<defaultValue:bool2(true,false);>;"
        "parameter int n<maxValue:-9;>;",
        "dst = sample(src, outCoord());"));
    graph->reportGraph();
    EXPECT_EQ(trace(), "graph : Test\nnodes:\n\t0 Node:Test\n\t1 ImageNode:src\nparameters:\n"
                       "index:0\nparam : f\ntype : float2\ndefaultValue:(1.000000, 2.000000, )\n"
                       "minValue:(0.000000, 0.000000, )\n"
                       "maxValue:(340282346638528859811704183484516925440.000000, 0.500000, )\n"
                       "index:1\nparam : b\ntype : bool2\ndefaultValue:(true, false, )\n"
                       "minValue:(false, false, )\nmaxValue:(false, false, )\n"
                       "index:2\nparam : n\ntype : int\ndefaultValue:(0, )\nminValue:(0, )\n"
                       "maxValue:(-9, )\n");
}

} // namespace
