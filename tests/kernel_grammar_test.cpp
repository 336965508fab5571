// What a kernel's text becomes: the model, and the text that goes to the GLSL compiler.
#include <memory>
#include <random>
#include <string>

#include "pixelbender/pbk_parser.h"
#include "tests/support/comma_locale.h"
#include "tests/support/pb_values.h"
#include "tests/support/running_command.h"

namespace {

pbKernelInfo parsed(std::string_view source) {
    pbKernelInfo kernel;
    PBKParser(source, kernel).parseKernel();
    return kernel;
}

pbKernelInfo parsedBody(const std::string& body) {
    return parsed("<languageVersion : 1.0;>\nkernel K <version : 2;> {" + body + "} behind } \" <");
}

std::string shaderText(const pbKernelInfo& kernel) {
    return std::string(kernel.shaderText);
}

// The parameter p of that type and metadata.
pbParameter parsedParameter(const std::string& type, const std::string& metadata) {
    const pbKernelInfo kernel = parsedBody("parameter " + type + " p <" + metadata + ">;");
    EXPECT_EQ(kernel.parameters.size(), 1U) << metadata;
    EXPECT_EQ(shaderText(kernel), "parameter " + type + " p;") << metadata;
    return kernel.parameters.empty() ? pbParameter() : kernel.parameters[0];
}

class KernelGrammarTest : public RunningCommand {};

TEST_F(KernelGrammarTest, rewritesTheBody) {
    struct Case {
        const char* body;
        const char* shaderText;
    };
    const Case cases[] = {
        {"input image4 src;", "input image4 src;"},
        {"input image4 a ,\n b ;", "input image4 a ,\n b ;"},
        {"output  pixel4\tdst ;", "output pixel4 dst ;"},
        {"output pixel4;x", "output pixel4x"},
        {"input;output;parameter;dependent;x", "x"},
        {"parameter float amount < defaultValue: 0.5; >;", "parameter float amount;"},
        {"parameter float a, b;", "parameter float a, b;"},
        {"parameter float a<defaultValue: 1.0;>, b <minValue: 2.0;> ;", "parameter float a, b;"},
        {"parameter float a[3] /* x */ more ;", "parameter float a;"},
        {"dependent float3 v;", "dependent varying float3 v;"},
        {"dependent int n, m;", "dependent int n, m;"},
        {"dependent bool4 b;", "dependent bool4 b;"},
        {"dependent strange s;", "dependent varying strange s;"},
        {"union reunion(union)", "tvek_union reunion(tvek_union)"},
        {"a/* { */b// }\nc", "a b\nc"},
        {"if (a < b) { output = c; }", "if (a < b) { output c }"},
        {"input /* the source */ image4 a;", "input the source */ image4 a;"},
        {"#define A ( \"[\n#undef A\nint i;", "#define A ( \"[\n#undef A\nint i;"},
        {"#define A input x\nb;", "#define A input x\nb;"},
        {"void evaluateDependents() { if (a) { b; } }c",
         "void evaluateDependents() {\n#ifdef tvek_VERTEX_SHADER\n if (a) { b; } \n#endif\n}c"},
        {"struct S { int a[2]; }; const float k = 1.5e3 * .5f;",
         "struct S { int a[2]; }; const float k = 1.5e3 * .5f;"},
        {"s('}')", "s('}')"},
        {"\xC3\xA4 \x01", "\xC3\xA4 \x01"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(shaderText(parsedBody(each.body)), each.shaderText) << each.body;
}

TEST_F(KernelGrammarTest, findsTheBodyInTheFile) {
    struct Case {
        const char* source;
        const char* shaderText;
    };
    const Case cases[] = {
        {"", ""},
        {"#version 1", "#version 1\n"},
        {"#", "#\n"},
        {"#if A {\nkernel K { x }", "#if A {\n\n x "},
        {"#define A 1 \\\n + 2\r\nkernel K{x}", "#define A 1 \\\n + 2\r\nx"},
        {"#define A // {\n{x}", "#define A // {\n\nx"},
        {"kernel K ( words ) 12 union {x}", "tvek_unionx"},
        {"kernel K { a { b } c", " a { b } c"},
        {"kernel K no body", ""},
        {"input image4 a; {x}", "input image4 a;x"},
        {"} {x}", ""},
        {"{x}}{y}", "x"},
        {"\xEF\xBB\xBFkernel K {x}", "x"},
        {"/* kernel A {y} */ kernel K {x}", "x"},
        {"// a\nkernel K {x\x03y}", "x"},
        {"<description: 'a{b>c}'; other: '>';> kernel K {x}", "x"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(shaderText(parsed(each.source)), each.shaderText) << each.source;
}

TEST_F(KernelGrammarTest, readsTheMetadata) {
    const pbKernelInfo kernel = parsed(
        "<languageVersion : 1.9; vendor: \"overwritten\";>\n"
        "kernel NameOfMoreThanThirtyOneCharacters\n"
        "< namespace : 'the \"space\"'; vendor : \"V > W\"; unknown : \"version word\" ; version : "
        "12f;\n"
        "  description : \"It's a\nlong { story\"; >\n"
        "{ output pixel4 first; output float4 last; dependent int2 a, b; input image2 c, d; }");
    EXPECT_EQ(nameText(kernel.name), "NameOfMoreThanThirtyOneCharacte");
    EXPECT_EQ(kernel.languageVersion, 1);
    EXPECT_EQ(nameText(kernel.namespaceName), "the \"space\"");
    EXPECT_EQ(nameText(kernel.vendor), "V > W");
    EXPECT_EQ(kernel.version, 12);
    EXPECT_EQ(kernel.description, "It's a\nlong { story");
    EXPECT_EQ(kernel.output.type, pbTypeFloat4);
    EXPECT_EQ(nameText(kernel.output.name), "last");
    ASSERT_EQ(kernel.dependents.size(), 2U);
    EXPECT_EQ(kernel.dependents[1].type, pbTypeInt2);
    EXPECT_EQ(nameText(kernel.dependents[1].name), "b");
    ASSERT_EQ(kernel.inputs.size(), 2U);
    EXPECT_EQ(kernel.inputs[0].type, pbTypeImage2);
    EXPECT_EQ(nameText(kernel.inputs[0].name), "c");

    const pbKernelInfo bare = parsed("kernel K <version : 99999999999;> {}");
    EXPECT_EQ(bare.languageVersion, 0);
    EXPECT_EQ(bare.version, 2147483647);
    // A value of the wrong form takes the block's end with it, and the next '>' ends the block.
    const pbKernelInfo wrong = parsed("<namespace : 5;> vendor: 'V' > kernel K {x}");
    EXPECT_EQ(nameText(wrong.namespaceName), "");
    EXPECT_EQ(nameText(wrong.vendor), "V");
    EXPECT_EQ(wrong.shaderText, "x");
}

struct ValueCase {
    const char* type;
    const char* text;
    pbValue value;
};

const ValueCase valueCases[] = {
    {"float", "0.5", floats({0.5F})},
    {"float", "float(.5f)", floats({0.5F})},
    {"float", "-0.5", floats({-0.5F})},
    {"float", "- /* 3 */ 1", floats({-1})},
    {"float", "1", floats({1})},
    {"float", "true", floats({1})},
    {"float", "1.5e2", floats({1.5F})},
    {"float2", "1e-3", floats({1, -3})},
    {"float2", "float2(-1.0, 1.0)", floats({-1, 1})},
    {"float2", "float2(0.5)", floats({0.5F, 0})},
    {"float2", "-1 2", floats({-1, 2})},
    {"float2", "- x, 2", floats({2, 0})},
    {"float4", "float4(1,2,3,4,5)", floats({1, 2, 3, 4})},
    {"pixel4", "(1 2) (3 4)", floats({1, 2, 3, 4})},
    {"float2x2", "float2x2(1,2,3,4)", floats({1, 2, 3, 4})},
    {"float3x3", "1,2,3,4,5,6,7,8,9,10", floats({1, 2, 3, 4, 5, 6, 7, 8, 9})},
    {"float4x4", "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17",
     floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16})},
    {"float", "0x10", floats({0})},
    {"float", "'a ; -' 7", floats({7})},
    {"float", "\"words 3\"", floats({3})},
    {"float", "999999999999999999999999999999999999999999", floats({3.40282347e38F})},
    {"int", "0.7", ints({0})},
    {"int", "-2147483648", ints({-2147483647 - 1})},
    {"int", "99999999999999999999", ints({2147483647})},
    {"int2", "int2(true, -3.9)", ints({1, -3})},
    {"bool", "2", bools({1})},
    {"bool", "-0.0", bools({0})},
    {"bool2", "bool2(true, false)", bools({1, 0})},
    {"bool3", "true,false,true,true", bools({1, 0, 1})},
    {"string", "'a' 1", ints({})},
    {"image1", "1", ints({})},
    {"strange", "1", ints({})},
};

TEST_F(KernelGrammarTest, readsValuesInAnyLocale) {
    const CommaLocale locale;
    for (const ValueCase& each : valueCases) {
        const std::string metadata = std::string("defaultValue: ") + each.text +
                                     "; minValue :" + each.text + ";maxValue:" + each.text + ";";
        const pbParameter parameter = parsedParameter(each.type, metadata);
        for (const pbValueSlot* slot :
             {&parameter.defaultValue, &parameter.minValue, &parameter.maxValue}) {
            EXPECT_TRUE(slot->isSet) << each.type << " " << each.text;
            EXPECT_TRUE(slot->value == each.value) << each.type << " " << each.text;
        }
    }
}

TEST_F(KernelGrammarTest, readsAParametersMetadata) {
    const pbParameter parameter = parsedParameter(
        "int2", "aeUIControl: 'aePoint'; parameterType: \"time\"; displayName: \"a > 'b'\";\n"
                "defaultValue: 1, 2; defaultValue: 3; unknown: \"x > 0\"; enumValues: '0|1';\n"
                "aeDisplayName: 'abcdefghijklmnopqrstuvwxyz0123456789'; aePopupString: \"A|B\";\n"
                "aePointRelativeDefaultValue: float2(0.25, -0.5);");
    EXPECT_EQ(parameter.type, pbTypeInt2);
    EXPECT_EQ(parameter.aeUIControl, pbControlPoint);
    EXPECT_EQ(parameter.parameterType, pbParameterTime);
    EXPECT_EQ(nameText(parameter.displayName), "a > 'b'");
    EXPECT_EQ(nameText(parameter.aeDisplayName), "abcdefghijklmnopqrstuvwxyz01234");
    EXPECT_EQ(parameter.enumValues.view(), "0|1");
    EXPECT_EQ(parameter.aePopupString.view(), "A|B");
    EXPECT_TRUE(parameter.defaultValue.value == ints({3}));
    EXPECT_FALSE(parameter.minValue.isSet);
    EXPECT_TRUE(parameter.aePointRelativeDefaultValue.isSet);
    EXPECT_EQ(parameter.aePointRelativeDefaultValue.x, 0.25F);
    EXPECT_EQ(parameter.aePointRelativeDefaultValue.y, -0.5F);

    const pbParameter unquoted =
        parsedParameter("Float2", "aeUIControl: aePopup; parameterType: 'Time'; displayName: d;");
    EXPECT_EQ(unquoted.type, pbTypeNone);
    EXPECT_EQ(unquoted.aeUIControl, pbControlNone);
    EXPECT_EQ(unquoted.parameterType, pbParameterNone);
    EXPECT_EQ(nameText(unquoted.displayName), "");
}

TEST_F(KernelGrammarTest, startsEachDeclaratorAnew) {
    const pbKernelInfo kernel =
        parsedBody("parameter float a <defaultValue: 1.0; displayName: 'A'; parameterType: 'enum'; "
                   "aeUIControl: 'aePopup'; enumValues: '1'; aePointRelativeDefaultValue: 1;>, "
                   "b <minValue: 2.0;>;");
    ASSERT_EQ(kernel.parameters.size(), 2U);
    const pbParameter& a = kernel.parameters[0];
    const pbParameter& b = kernel.parameters[1];
    EXPECT_TRUE(a.defaultValue.isSet && !a.minValue.isSet);
    EXPECT_EQ(nameText(b.name), "b");
    EXPECT_EQ(b.type, pbTypeFloat);
    EXPECT_TRUE(!b.defaultValue.isSet && b.minValue.isSet);
    EXPECT_FALSE(b.aePointRelativeDefaultValue.isSet);
    EXPECT_EQ(nameText(b.displayName), "");
    EXPECT_EQ(b.parameterType, pbParameterNone);
    EXPECT_EQ(b.aeUIControl, pbControlNone);
    // What the flags covered stays.
    EXPECT_TRUE(b.defaultValue.value == floats({1}));
    EXPECT_EQ(b.enumValues.view(), "1");
}

TEST_F(KernelGrammarTest, takesALostSemicolonFromTheNextDeclaration) {
    const pbKernelInfo kernel =
        parsedBody("parameter float2 a <defaultValue: 1> ; parameter int b <maxValue: 5;>; x");
    ASSERT_EQ(kernel.parameters.size(), 1U);
    EXPECT_TRUE(kernel.parameters[0].defaultValue.value == floats({1}));
    EXPECT_TRUE(kernel.parameters[0].maxValue.value == floats({5}));
    EXPECT_EQ(kernel.shaderText, "parameter float2 a; x");
}

const char* const wholeKernel =
    "<languageVersion : 1.0;> #define A 1\nkernel ANameOfSomeLength <description: 'a long enough "
    "description of it';> { input image4 aSourceWithAVeryLongName, b; output pixel4 dst;"
    "parameter float first <displayName: 'd'; enumValues: 'a text beyond the short ones';>, second;"
    "dependent int n; void evaluateDependents() { n = 1; } void evaluatePixel() { dst = 0.; } }";

TEST_F(KernelGrammarTest, copiesOutliveTheirSource) {
    auto source = std::make_unique<pbKernelInfo>(parsed(wholeKernel));
    const pbKernelInfo copy = *source;
    source->shaderText[0] = '?';
    source.reset();
    EXPECT_EQ(copy.shaderText.substr(0, 12), "#define A 1\n");
    EXPECT_EQ(copy.inputs.at(0).wholeName, "aSourceWithAVeryLongName");
    EXPECT_EQ(copy.parameters.at(1).enumValues.view(), "a text beyond the short ones");
    EXPECT_EQ(copy.description, "a long enough description of it");
}

TEST_F(KernelGrammarTest, endsInAnOrderlyWayWithoutMemory) {
    EXPECT_GT(failEveryAllocation([] {
                  const pbKernelInfo kernel = parsed(wholeKernel);
                  const pbKernelInfo copy = kernel;
              }),
              20U);
}

TEST_F(KernelGrammarTest, survivesAnyText) {
    const std::string_view pieces[] = {"{",
                                       "}",
                                       "<",
                                       ">",
                                       ";",
                                       ",",
                                       "'",
                                       "\"",
                                       "\\",
                                       "/*",
                                       "*/",
                                       "//",
                                       "\n",
                                       "\r",
                                       "#",
                                       "input",
                                       "output",
                                       "parameter",
                                       "dependent",
                                       "kernel",
                                       "union",
                                       "float",
                                       "int4",
                                       "image4",
                                       "defaultValue",
                                       "minValue",
                                       "version",
                                       "description",
                                       "-",
                                       "1.5",
                                       "0x",
                                       "true",
                                       "\x03",
                                       "\xFF",
                                       "evaluateDependents",
                                       " ",
                                       "enumValues",
                                       "displayName",
                                       std::string_view("\0", 1)};
    std::mt19937 random(20);
    for (int round = 0; round < 5000; ++round) {
        std::string source = round % 2 == 0 ? "kernel K {" : "";
        for (auto count = random() % 60; count > 0; --count)
            source += pieces[random() % std::size(pieces)];
        const pbKernelInfo kernel = parsed(source);
        EXPECT_LE(kernel.shaderText.size(), 64 + 60 * 44U) << testing::PrintToString(source);
    }
}

// A reader that goes back over what it has read would not come to an end here.
TEST_F(KernelGrammarTest, readsAMegabyteOfAnything) {
    struct Case {
        const char* start;
        std::string_view piece;
    };
    const Case cases[] = {
        {"", "\\\""},
        {"", "< "},
        {"#", "#\\\n"},
        {"{", "/*\""},
        {"{", "union "},
        {"{input a /*", "'\""},
        {"<description ", "version'"},
        {"{parameter a<displayName '", "\\"},
        {"{parameter a<", "displayName \""},
    };
    for (const Case& each : cases) {
        std::string source = each.start;
        while (source.size() < 1000000)
            source += each.piece;
        EXPECT_LE(parsed(source).shaderText.size(), 2 * source.size()) << each.start << each.piece;
    }
}

} // namespace
