// Parameter values on their way into the shader, and what a graph tells about itself.

#include <limits>

#include "tests/support/engine_fixture.h"

namespace {

class Parameters : public EngineTest {
protected:
    // What one pixel of a kernel without inputs gives.
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

// Each default reaches the shader by the call that its control, its word or its type asks for.
TEST_F(Parameters, DefaultsReachTheShader) {
    struct Case {
        const char* declaration;
        const char* value;
        Pixel expected;
    };
    const std::vector<Case> cases = {
        {"int p<defaultValue:-7;>", "float4(float(p))", {-7, -7, -7, -7}},
        {"int3 p<defaultValue:int3(1,-2,3);>",
         "float4(float(p.x), float(p.y), float(p.z), 0.0)",
         {1, -2, 3, 0}},
        {"float p<defaultValue:0.5;>", "float4(p)", {0.5F, 0.5F, 0.5F, 0.5F}},
        {"float2 p<defaultValue:float2(0.5,-4.0);>", "float4(p, p)", {0.5F, -4, 0.5F, -4}},
        {"pixel3 p<defaultValue:pixel3(1.0,2.0,3.0);>", "float4(p, 4.0)", {1, 2, 3, 4}},
        {"float4 p<defaultValue:float4(1.0,2.0,3.0,4.0);>", "p", {1, 2, 3, 4}},
        {"float2x2 p<defaultValue:float2x2(1.0,2.0,3.0,4.0);>", "float4(p[0], p[1])", {1, 2, 3, 4}},
        {"float3x3 p<defaultValue:float3x3(1,2,3,4,5,6,7,8,9);>",
         "float4(p[2], p[0][1])",
         {7, 8, 9, 2}},
        {"float4x4 p<defaultValue:float4x4(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16);>",
         "p[3]",
         {13, 14, 15, 16}},
        {"bool p<defaultValue:true;>", "float4(p ? 1.0 : 0.0)", {1, 1, 1, 1}},
        {"bool3 p<defaultValue:bool3(true,false,true);>",
         "float4(float3(p), 0.5)",
         {1, 0, 1, 0.5F}},
        {"bool4 p<defaultValue:bool4(false,true,false,true);>", "float4(p)", {0, 1, 0, 1}},
        {"int p<defaultValue:2; aeUIControl:\"aePopup\";>", "float4(float(p))", {2, 2, 2, 2}},
        {"float p<defaultValue:90.0; aeUIControl:\"aeAngle\";>", "float4(p)", {90, 90, 90, 90}},
        {"float2 p<defaultValue:float2(3.0,4.0); aeUIControl:\"aePoint\";>",
         "float4(p, p)",
         {3, 4, 3, 4}},
        {"float3 p<defaultValue:float3(1.0,2.0,3.0); aeUIControl:\"aeColor\";>",
         "float4(p, 0.0)",
         {1, 2, 3, 0}},
        {"pixel4 p<defaultValue:pixel4(1.0,2.0,3.0,4.0); aeUIControl:\"aeColor\";>",
         "p",
         {1, 2, 3, 4}},
        {"pixel3 p<defaultValue:pixel3(1.0,2.0,3.0); aeUIControl:\"aeColor\";>",
         "float4(p, 0.0)",
         {1, 2, 3, 0}},
        // The control decides before the word.
        {"int p<defaultValue:2; aeUIControl:\"aePopup\"; parameterType:\"angleDegrees\";>",
         "float4(float(p))",
         {2, 2, 2, 2}},
        // A popup's whole number does not fit a float: it is not sent, and the frame is none the
        // worse.
        {"float p<defaultValue:0.5; aeUIControl:\"aePopup\";>", "float4(p)", {0, 0, 0, 0}},
        // A colour control on a single number sends nothing.
        {"float p<defaultValue:0.5; aeUIControl:\"aeColor\";>", "float4(p)", {0, 0, 0, 0}},
        {"float3 p<defaultValue:float3(1.0,2.0,3.0); parameterType:\"colorRGB\";>",
         "float4(p, 0.0)",
         {1, 2, 3, 0}},
        {"int p<defaultValue:3; parameterType:\"enum\";>", "float4(float(p))", {3, 3, 3, 3}},
        {"float p<defaultValue:5.0; parameterType:\"angleDegrees\";>", "float4(p)", {5, 5, 5, 5}},
        // The name field holds 31 bytes, the uniform's name is the whole.
        {"float aNameThatIsTooLongForTheNameFieldOfTheModel<defaultValue:0.25;>",
         "float4(aNameThatIsTooLongForTheNameFieldOfTheModel)",
         {0.25F, 0.25F, 0.25F, 0.25F}},
        {"float p", "float4(p)", {0, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        const auto graph = generator(c.declaration, c.value);
        EXPECT_EQ(pixelOf(*graph), c.expected) << c.declaration << log();
        EXPECT_EQ(graph->frameError, 0U) << c.declaration;
    }
}

// A value written between two frames counts for the second.
TEST_F(Parameters, ValuesCountForTheNextFrame) {
    const auto graph = generator("float p<defaultValue:0.5;>", "float4(p)");
    EXPECT_EQ(pixelOf(*graph)[0], 0.5F);
    graph->parameters[0]->value.floats[0] = -2.5F;
    EXPECT_EQ(pixelOf(*graph)[0], -2.5F);
}

// The int and bool dependents travel as floats; all are worked out before any pixel.
TEST_F(Parameters, DependentsArriveAtEachPixel) {
    const auto graph = kernelGraph(
        "kernel Test { output pixel4 dst; parameter float p<defaultValue:3.0;>;"
        "dependent int n, _m; dependent bool b; dependent float2 f;"
        "void evaluateDependents() { n = int(p) + 1; _m = -2; b = p > 2.0; f = float2(p, p * p); }"
        "void evaluatePixel() { dst = float4(float(n), float(_m), b ? f.x : 0.0, f.y); } }");
    EXPECT_EQ(pixelOf(*graph), (Pixel{4, -2, 3, 9})) << log();
}

TEST_F(Parameters, TellsTheUserAboutTheFile) {
    const auto graph = kernelGraph("<languageVersion : 1.0;> kernel mykernel < vendor: \"acme\"; "
                                   "version: 2; description: \"Blurs.\"; > { output pixel4 dst; "
                                   "void evaluatePixel() { dst = float4(0.0); } }");
    EXPECT_EQ(std::string(graph->infoText),
              "Pixel Bender Kernel : mykernel\nversion : 2\nVendor : acme\n\nBlurs.");
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
