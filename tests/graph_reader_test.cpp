// Graph documents: the resulting model, its values and its parameter expressions.
#include <array>
#include <string>
#include <tuple>
#include <utility>

#include "pixelbender/graph_reader.h"
#include "tests/support/comma_locale.h"
#include "tests/support/pb_values.h"
#include "tests/support/running_command.h"

namespace {

class GraphReaderTest : public RunningCommand {};

const std::string wholeDocument = R"xml(<?xml version="1.0" encoding="UTF-8"?>
<!-- graph --> <other/>
<graph name="NameOfMoreThanThirtyOneCharacters" languageVersion="2.5">
  <connect fromImage="in" toNode="n1" toInput="src"/>
  <metadata name="namespace" value="space"/> <metadata name="vendor" value="V &amp; W"/>
  <metadata name="version" value="3"/> <metadata value="unnamed"/>
  <metadata name="description" value="a &lt;long&gt; text"/>
  <parameter type="float2" name="amount"> text
    <metadata name="defaultValue" value="0.5,1e1"/> <metadata name="minValue" value="-1"/>
    <metadata name="maxValue"/> <metadata name="aeUIControl" value="aePoint"/>
    <metadata name="parameterType" value="time"/> <metadata name="displayName" value="Amount"/>
    <metadata name="aeDisplayName" value="Menge"/> <metadata name="enumValues" value="0|1"/>
    <metadata name="aePopupString" value="A|B"/> <metadata name="Amount" value="1"/>
    <metadata name="aePointRelativeDefaultValue" value="0.25,0.75"/>
  </parameter>
  <parameter name="untyped"/> <parameter type="int"/>
  <inputImage type="image4" name="in"/> <inputImage name="typeless"/> <inputImage/>
  <outputImage type="image3" name="out"/> <outputImage type="image1" name="second"/>
  <kernel><![CDATA[kernel A { input image4 src; }]]></kernel>
  <kernel><!-- none --> kernel N {}</kernel> <kernel/>
  <kernel>kernel B { x &lt; y }</kernel>
  <node id="n1" name="A" namespace="s" vendor="v" version="7" clientID="c">
    <evaluateParameters>n1::a = amount;</evaluateParameters>
    <evaluateParameters>second</evaluateParameters>
  </node>
  <node version="seven"/> <graph name="inner"/>
</graph>
<graph name="second"/>)xml";

TEST_F(GraphReaderTest, readsAWholeDocument) {
    pbGraphInfo graph;
    EXPECT_EQ(readGraphText(wholeDocument, graph), 0);
    EXPECT_EQ(joined({graph.name, graph.namespaceName, graph.vendor, graph.output.name}),
              "NameOfMoreThanThirtyOneCharacte|space|V & W|out");
    EXPECT_EQ(std::pair(graph.languageVersion, graph.version), std::pair(2, 3));
    EXPECT_EQ(graph.description, "a <long> text");
    ASSERT_EQ(graph.inputs.size(), 3U);
    EXPECT_EQ(joined({graph.inputs[0].name, graph.inputs[1].name, graph.inputs[2].name}),
              "in|typeless|");
    EXPECT_EQ(std::pair(graph.inputs[0].type, graph.inputs[1].type),
              std::pair(pbTypeImage4, pbTypeNone));
    EXPECT_EQ(graph.output.type, pbTypeImage3);
    ASSERT_EQ(graph.kernels.size(), 2U);
    EXPECT_EQ(nameText(graph.kernels[0].name), "A");
    EXPECT_EQ(graph.kernels[0].shaderText, " input image4 src; ");
    EXPECT_EQ(graph.kernels[1].shaderText, " x < y ");
    ASSERT_EQ(graph.nodes.size(), 2U);
    const pbgNodeInfo& node = graph.nodes[0];
    EXPECT_EQ(joined({node.id, node.name, node.namespaceName, node.vendor, node.clientID}),
              "n1|A|s|v|c");
    EXPECT_EQ(std::pair(node.version, graph.nodes[1].version), std::pair(7, 1));
    EXPECT_EQ(node.evaluateParametersText, "n1::a = amount;");
    EXPECT_EQ(node.evaluateParametersCode, "a = tveg_amount;");

    ASSERT_EQ(graph.parameters.size(), 1U);
    const pbParameter& amount = graph.parameters[0];
    EXPECT_EQ(joined({amount.name, amount.displayName, amount.aeDisplayName}),
              "amount|Amount|Menge");
    EXPECT_EQ(amount.type, pbTypeFloat2);
    EXPECT_TRUE(amount.defaultValue.isSet && amount.defaultValue.value == floats({0.5F, 10}));
    EXPECT_TRUE(amount.minValue.isSet && amount.minValue.value == floats({-1}));
    EXPECT_TRUE(amount.maxValue.isSet && amount.maxValue.value == floats({}));
    EXPECT_EQ(amount.aeUIControl, pbControlPoint);
    EXPECT_EQ(amount.parameterType, pbParameterTime);
    EXPECT_EQ(amount.enumValues.view(), "0|1");
    EXPECT_EQ(amount.aePopupString.view(), "A|B");
    const pbPointDefault& point = amount.aePointRelativeDefaultValue;
    EXPECT_TRUE(point.isSet && point.x == 0.25F && point.y == 0.75F);
}

TEST_F(GraphReaderTest, readsVersions) {
    // The text; the result, the language version, the graph's version.
    const std::pair<const char*, std::array<int, 3>> cases[] = {
        {"\xEF\xBB\xBF<graph languageVersion='2'><metadata name='version'/></graph>", {0, 2, 1}},
        {"<graph languageVersion='x'><metadata name='version' value='x'/></graph>", {0, 1, 1}},
        {"<graph languageVersion='99999999999'/>", {0, 2147483647, 0}},
        {"<graph languageVersion='2'><metadata name='version' value='5'/><oops", {0, 2, 5}},
        {"<a><graph/></a>", {1, 0, 0}},
        {"", {1, 0, 0}},
    };
    for (const auto& [text, numbers] : cases) {
        pbGraphInfo graph;
        const int result = readGraphText(text, graph);
        EXPECT_EQ((std::array{result, graph.languageVersion, graph.version}), numbers) << text;
    }
}

TEST_F(GraphReaderTest, readsConnections) {
    // The attributes; the names from, fromOutput, to and toInput; the kind.
    const std::tuple<std::string, const char*, pbConnectionKind> cases[] = {
        {"fromImage='i' toNode='n' toInput='src'", "i||n|src", ImageToNode},
        {"fromNode='n' fromOutput='o' toNode='m' toInput='s'", "n|o|m|s", NodeToNode},
        {"fromNode='n' fromOutput='o' toImage='out' toInput='s'", "n|o|out|", ToOutputImage},
        {"", "|||", NodeToNode},
    };
    for (const auto& [attributes, names, kind] : cases) {
        pbGraphInfo graph;
        readGraphText("<graph><connect " + attributes + "/></graph>", graph);
        const pbConnection& found = graph.connections.at(0);
        EXPECT_EQ(joined({found.from, found.fromOutput, found.to, found.toInput}), names);
        EXPECT_EQ(found.kind, kind) << attributes;
    }
}

TEST_F(GraphReaderTest, readsValueTextsInAnyLocale) {
    const std::tuple<pbElementType, const char*, pbValue> cases[] = {
        {pbTypeInt2, " 1, -2,3", ints({1, -2})},
        {pbTypeInt, "99999999999", ints({2147483647})},
        {pbTypeFloat2, "0.5,0.25", floats({0.5F, 0.25F})},
        {pbTypeFloat2, "float2(0.5,0.25)", floats({})},
        {pbTypePixel3, "1e2, -.5,+3.", floats({100, -0.5F, 3})},
        {pbTypeFloat3x3, "1,2,3,4,5,6,7,8,9,10", floats({1, 2, 3, 4, 5, 6, 7, 8, 9})},
        {pbTypeBool4, "true,true,false, \ttrue x", bools({1, 1, 0, 1})},
        {pbTypeBool2, "abcdefghijklmnopqrstuvwxyz0123456789,true", bools({0, 1})},
        {pbTypeImage4, "1,2,3,4", ints({})},
        {pbTypeFloat, nullptr, floats({})},
        {static_cast<pbElementType>(25), "1", floats({})},
    };
    const CommaLocale locale;
    for (const auto& [type, text, value] : cases)
        EXPECT_TRUE(parseValueText(text, type) == value) << type << testing::PrintToString(text);
}

TEST_F(GraphReaderTest, rewritesParameterExpressions) {
    const std::tuple<std::string, std::string, const char*> cases[] = {
        // node, text, code
        {"blur", "blur::amount = amount * 2.0;", "amount = tveg_amount * 2.0;"},
        {"blur", "blur2::a = amounts + _bias;", "blur2::a = amounts + _tveg_bias;"},
        {"", "::a = blur::b;", "::a = blur::b;"},
        {"blur", "f() { { blur::a; } } g() { amount; }", "f() { { a; } }"},
        {"blur", "{\n\t\ta\n\n\r\n \tb\t}", "{\na\n\r\n \tb\t}"},
        {"blur", "{ /* amount */ a; // blur\n\tb }", "{   a; \nb }"},
        {"blur", "#define A blur amount\nblur::a", "#define A   tveg_amount\na"},
        {"blur", "aParameterOfMoreThanThirtyOneBytes", "tveg_aParameterOfMoreThanThirtyOneBytes"},
    };
    for (const auto& [node, text, code] : cases) {
        pbGraphInfo graph;
        readGraphText(
            "<graph><parameter name='amount' type='float'/>"
            "<parameter name='_bias' type='float'/>"
            "<parameter name='aParameterOfMoreThanThirtyOneBytes' type='int'/><node id='" +
                node + "'><evaluateParameters><![CDATA[" + text +
                "]]></evaluateParameters></node></graph>",
            graph);
        EXPECT_EQ(std::string(graph.nodes.at(0).evaluateParametersCode), code) << text;
    }
}

} // namespace
