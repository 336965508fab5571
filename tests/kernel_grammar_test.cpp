// Kernel texts: the resulting model, and the text for the GLSL compiler.
#include <string>
#include <tuple>
#include <utility>

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

// The parameter p with that type and metadata.
pbParameter parsedParameter(const std::string& type, const std::string& metadata) {
    const pbKernelInfo kernel = parsedBody("parameter " + type + " p <" + metadata + ">;");
    EXPECT_EQ(kernel.parameters.size(), 1U) << metadata;
    EXPECT_EQ(std::string(kernel.shaderText), "parameter " + type + " p;") << metadata;
    return kernel.parameters.empty() ? pbParameter() : kernel.parameters[0];
}

class KernelGrammarTest : public RunningCommand {};

TEST_F(KernelGrammarTest, makesTheShaderText) {
    const std::pair<const char*, const char*> cases[] = {
        {"{input image4 a ,\n b ;}", "input image4 a ,\n b ;"},
        {"{input;output;parameter;dependent;x}", "x"},
        {"{parameter float a<defaultValue: 1.0;>, b <minValue: 2.0;> ;}", "parameter float a, b;"},
        {"{parameter float a[3] /* x */ more ;}", "parameter float a;"},
        {"{dependent float3 v;}", "dependent varying float3 v;"},
        {"{union reunion(union)}", "tvek_union reunion(tvek_union)"},
        {"{a/* { */b// }\nc}", "a b\nc"},
        {"{if (a < b) { output = c; }}", "if (a < b) { output c }"},
        {"{input image4 a }; < b > c", "input image4 a };  c"}, // the brace closed the kernel
        {"{#define A ( \"[\n#undef A\nint i;}", "#define A ( \"[\n#undef A\nint i;"},
        {"{#define A input x\nb;}", "#define A input x\nb;"},
        {"{void evaluateDependents() { if (a) { b; } }c}",
         "void evaluateDependents() {\n#ifdef tvek_VERTEX_SHADER\n if (a) { b; } \n#endif\n}c"},
        {"{s('}')\xC3\xA4 \x01}", "s('}')\xC3\xA4 \x01"},
        {"#if A {\nkernel K { x }", "#if A {\n\n x "},
        {"{#a // \\\n}x", "#a \n"}, // a backslash does not continue a comment
        {"{#a /* }\n } */ b \"\\\"}\" x}", "#a   b \"\\\"}\" x"},
        {"#define A 1 \\\n + 2\r\nkernel K{x}", "#define A 1 \\\n + 2\r\nx"},
        {"kernel K ( words ) 12 union {x}", "tvek_unionx"},
        {"{x}}{y}", "x"},
        {"\xEF\xBB\xBF/* kernel A {y} */ kernel K {x}", "x"},
        {"<description: 'a{b>c}'; other: '>';> kernel K {x} behind } \" <", "x"},
    };
    for (const auto& [source, shaderText] : cases)
        EXPECT_EQ(std::string(parsed(source).shaderText), shaderText) << source;
}

TEST_F(KernelGrammarTest, readsTheMetadata) {
    const pbKernelInfo kernel = parsed(
        "<languageVersion : 1.9; vendor: \"overwritten\";> kernel NameOfMoreThanThirtyOneCharacters"
        "< namespace : 'the \"space\"'; vendor : \"V > W\"; unknown : \"version word\" ; version : "
        "12f;\n  description : \"It's a\nlong { story\"; >\n"
        "{ output pixel4 first; output float4 last; dependent int2 a, b; input image2 c, d; }");
    EXPECT_EQ(joined({kernel.name, kernel.namespaceName, kernel.vendor, kernel.output.name}),
              "NameOfMoreThanThirtyOneCharacte|the \"space\"|V > W|last");
    EXPECT_EQ(std::pair(kernel.languageVersion, kernel.version), std::pair(1, 12));
    EXPECT_EQ(kernel.description, "It's a\nlong { story");
    EXPECT_EQ(kernel.output.type, pbTypeFloat4);
    ASSERT_EQ(kernel.dependents.size(), 2U);
    ASSERT_EQ(kernel.inputs.size(), 2U);
    EXPECT_EQ(kernel.dependents[1].type, pbTypeInt2);
    EXPECT_EQ(kernel.inputs[0].type, pbTypeImage2);
    EXPECT_EQ(joined({kernel.dependents[1].name, kernel.inputs[0].name}), "b|c");

    // A malformed value consumes the end of its metadata block, so that the next '>' ends the
    // block.
    const pbKernelInfo wrong =
        parsed("<namespace : 5;> vendor: 'V' > kernel K <version : 99999999999;> {x}");
    EXPECT_EQ(joined({wrong.namespaceName, wrong.vendor}), "|V");
    EXPECT_EQ(wrong.version, 2147483647);
    EXPECT_EQ(wrong.shaderText, "x");
}

const std::tuple<const char*, const char*, pbValue> valueCases[] = {
    {"float", "0.5", floats({0.5F})},
    {"float", "- /* 3 */ 1", floats({-1})},
    {"float", "1.5e2", floats({1.5F})},
    {"float2", "1e-3", floats({1, -3})},
    {"float2", "float2(-1.0, 1.0)", floats({-1, 1})},
    {"float2", "float2(0.5)", floats({0.5F, 0})},
    {"float3", "true, 2, false", floats({1, 2, 0})},
    {"float3", "- a, 1, -(2)", floats({1, -2})},
    {"float2", "1 'a; -' 2", floats({1, 2})},
    {"float4", "float4(1,2,3,4,5)", floats({1, 2, 3, 4})},
    {"pixel4", "(1 2) (3 4)", floats({1, 2, 3, 4})},
    {"float3x3", "1,2,3,4,5,6,7,8,9,10", floats({1, 2, 3, 4, 5, 6, 7, 8, 9})},
    {"float", "999999999999999999999999999999999999999999", floats({3.40282347e38F})},
    {"int", "-2147483648", ints({-2147483647 - 1})},
    {"int", "99999999999999999999", ints({2147483647})},
    {"int2", "int2(true, -3.9)", ints({1, -3})},
    {"bool3", "true,false,true,true", bools({1, 0, 1})},
    {"bool3", "0.5, 0.0, -2", bools({1, 0, 1})},
    {"string", "'a' 1", ints({})},
};

TEST_F(KernelGrammarTest, readsValuesInAnyLocale) {
    const CommaLocale locale;
    for (const auto& [type, text, value] : valueCases) {
        const std::string all = std::string("defaultValue: ") + text + "; minValue :" + text +
                                ";maxValue:" + text + ";";
        const pbParameter p = parsedParameter(type, all);
        for (const pbValueSlot* slot : {&p.defaultValue, &p.minValue, &p.maxValue})
            EXPECT_TRUE(slot->isSet && slot->value == value) << type << " " << text;
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
    EXPECT_EQ(joined({parameter.displayName, parameter.aeDisplayName}),
              "a > 'b'|abcdefghijklmnopqrstuvwxyz01234");
    EXPECT_EQ(parameter.enumValues.view(), "0|1");
    EXPECT_EQ(parameter.aePopupString.view(), "A|B");
    EXPECT_TRUE(parameter.defaultValue.value == ints({3}));
    EXPECT_FALSE(parameter.minValue.isSet);
    const pbPointDefault& point = parameter.aePointRelativeDefaultValue;
    EXPECT_TRUE(point.isSet && point.x == 0.25F && point.y == -0.5F);
}

// An unquoted text is read as empty and consumes only its own end.
TEST_F(KernelGrammarTest, readsAnUnquotedTextAsEmpty) {
    const pbParameter parameter = parsedParameter(
        "float", "aeUIControl: aePopup; parameterType: time; displayName: Size; aeDisplayName: S;"
                 "enumValues: 0; aePopupString: A; minValue: 2;");
    EXPECT_EQ(std::pair(parameter.aeUIControl, parameter.parameterType),
              std::pair(pbControlNone, pbParameterNone));
    EXPECT_EQ(joined({parameter.displayName, parameter.aeDisplayName}), "|");
    EXPECT_TRUE(parameter.enumValues.view().empty() && parameter.aePopupString.view().empty());
    EXPECT_TRUE(parameter.minValue.isSet && parameter.minValue.value == floats({2}));
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
    EXPECT_TRUE(!b.defaultValue.isSet && b.minValue.isSet && !b.aePointRelativeDefaultValue.isSet);
    EXPECT_EQ(joined({b.name, b.displayName}), "b|");
    EXPECT_EQ(b.type, pbTypeFloat);
    EXPECT_EQ(std::pair(b.parameterType, b.aeUIControl), std::pair(pbParameterNone, pbControlNone));
    // Components that the flags mask are unchanged.
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

// A reader that went back over its input would take quadratic time here.
TEST_F(KernelGrammarTest, readsAMegabyteOfAnything) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "\\\""},
        {"#", "#\\\n"},
        {"{", "/*\""},
        {"{", "union "},
        {"{input a /*", "'\""},
        {"<description ", "version'"},
        {"{parameter a<displayName '", "\\"},
        {"{parameter a<", "displayName \""},
    };
    for (const auto& [start, piece] : cases) {
        std::string source = start;
        while (source.size() < 1000000)
            source += piece;
        EXPECT_LE(parsed(source).shaderText.size(), 2 * source.size()) << start << piece;
    }
}

} // namespace
