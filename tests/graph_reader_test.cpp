// Graph documents: what they become in the model, their values and their parameter expressions.
#include <optional>
#include <string>

#include "pixelbender/graph_reader.h"
#include "tests/support/comma_locale.h"
#include "tests/support/pb_values.h"
#include "tests/support/running_command.h"

namespace {

class GraphReaderTest : public RunningCommand {
protected:
    // The document's text inside a graph element.
    void read(const std::string& contents) { read("<graph>" + contents + "</graph>", 0); }
    void read(const std::string& text, int result) {
        EXPECT_EQ(readGraphText(text, graph.emplace()), result) << text;
    }

    std::optional<pbGraphInfo> graph;
};

const std::string wholeDocument = R"xml(<?xml version="1.0" encoding="UTF-8"?>
<!-- graph --> <other/>
<graph name="NameOfMoreThanThirtyOneCharacters" languageVersion="2.5">
  <connect fromImage="in" toNode="n1" toInput="src"/>
  <metadata name="namespace" value="space"/> <metadata name="vendor" value="V &amp; W"/>
  <metadata name="version" value="3"/> <metadata value="nobody"/>
  <metadata name="description" value="a &lt;long&gt; text"/>
  <parameter type="float2" name="amount"> text
    <metadata name="defaultValue" value="0.5,1e1"/> <metadata name="minValue" value="-1"/>
    <metadata name="maxValue"/> <metadata name="aeUIControl" value="aePoint"/>
    <metadata name="parameterType" value="time"/> <metadata name="displayName" value="Amount"/>
    <metadata name="aeDisplayName" value="Menge"/> <metadata name="enumValues" value="0|1"/>
    <metadata name="aePopupString" value="A|B"/> <metadata name="Amount" value="1"/>
    <metadata name="aePointRelativeDefaultValue" value="0.25,0.75"/>
  </parameter>
  <parameter name="untyped"/> <parameter type="int"/> <parameter name="odd" type="odd"/>
  <inputImage type="image4" name="in"/> <inputImage name="typeless"/> <inputImage/>
  <outputImage type="image3" name="out"/> <outputImage type="image1" name="second"/>
  <kernel><![CDATA[<languageVersion : 1.0;>
kernel A { // a comment
input image4 src; }]]></kernel>
  <kernel><!-- none --> kernel N {}</kernel> <kernel/>
  <kernel>kernel B { x &lt; y }</kernel>
  <node id="n1" name="A" namespace="s" vendor="v" version="7" clientID="c">
    <evaluateParameters>n1::a = amount;</evaluateParameters>
    <evaluateParameters>second</evaluateParameters>
  </node>
  <node version="seven"/>
  <graph name="inner"/>
</graph>
<graph name="second"/>)xml";

TEST_F(GraphReaderTest, readsAWholeDocument) {
    read(wholeDocument, 0);
    EXPECT_EQ(nameText(graph->name), "NameOfMoreThanThirtyOneCharacte");
    EXPECT_EQ(graph->languageVersion, 2);
    EXPECT_EQ(nameText(graph->namespaceName), "space");
    EXPECT_EQ(nameText(graph->vendor), "V & W");
    EXPECT_EQ(graph->version, 3);
    EXPECT_EQ(graph->description, "a <long> text");

    ASSERT_EQ(graph->inputs.size(), 3U);
    EXPECT_EQ(graph->inputs[0].type, pbTypeImage4);
    EXPECT_EQ(nameText(graph->inputs[0].name), "in");
    EXPECT_EQ(graph->inputs[1].type, pbTypeNone);
    EXPECT_EQ(nameText(graph->inputs[1].name), "typeless");
    EXPECT_EQ(nameText(graph->inputs[2].name), "");
    EXPECT_EQ(graph->output.type, pbTypeImage3);
    EXPECT_EQ(nameText(graph->output.name), "out");

    ASSERT_EQ(graph->kernelSources.size(), 2U);
    ASSERT_EQ(graph->kernels.size(), 2U);
    EXPECT_EQ(nameText(graph->kernels[0].name), "A");
    EXPECT_EQ(graph->kernels[0].shaderText, " \ninput image4 src; ");
    EXPECT_EQ(graph->kernels[1].shaderText, " x < y ");

    ASSERT_EQ(graph->nodes.size(), 2U);
    const pbgNodeInfo& node = graph->nodes[0];
    EXPECT_EQ(nameText(node.id), "n1");
    EXPECT_EQ(nameText(node.name), "A");
    EXPECT_EQ(nameText(node.namespaceName), "s");
    EXPECT_EQ(nameText(node.vendor), "v");
    EXPECT_EQ(nameText(node.clientID), "c");
    EXPECT_EQ(node.version, 7);
    EXPECT_EQ(node.evaluateParametersText, "n1::a = amount;");
    EXPECT_EQ(node.evaluateParametersCode, "a = tveg_amount;");
    EXPECT_EQ(graph->nodes[1].version, 1);
    EXPECT_EQ(nameText(graph->nodes[1].id), "");
}

TEST_F(GraphReaderTest, readsParameters) {
    read(wholeDocument, 0);
    ASSERT_EQ(graph->parameters.size(), 2U);
    const pbParameter& amount = graph->parameters[0];
    EXPECT_EQ(nameText(amount.name), "amount");
    EXPECT_EQ(amount.type, pbTypeFloat2);
    EXPECT_TRUE(amount.defaultValue.isSet && amount.defaultValue.value == floats({0.5F, 10}));
    EXPECT_TRUE(amount.minValue.isSet && amount.minValue.value == floats({-1}));
    EXPECT_TRUE(amount.maxValue.isSet && amount.maxValue.value == floats({}));
    EXPECT_EQ(amount.aeUIControl, pbControlPoint);
    EXPECT_EQ(amount.parameterType, pbParameterTime);
    EXPECT_EQ(nameText(amount.displayName), "Amount");
    EXPECT_EQ(nameText(amount.aeDisplayName), "Menge");
    EXPECT_EQ(amount.enumValues.view(), "0|1");
    EXPECT_EQ(amount.aePopupString.view(), "A|B");
    EXPECT_TRUE(amount.aePointRelativeDefaultValue.isSet);
    EXPECT_EQ(amount.aePointRelativeDefaultValue.x, 0.25F);
    EXPECT_EQ(amount.aePointRelativeDefaultValue.y, 0.75F);
    const pbParameter& odd = graph->parameters[1];
    EXPECT_EQ(odd.type, pbTypeNone);
    EXPECT_FALSE(odd.defaultValue.isSet || odd.minValue.isSet || odd.maxValue.isSet);
}

TEST_F(GraphReaderTest, readsVersions) {
    struct Case {
        const char* text;
        int result, languageVersion, version;
    };
    const Case cases[] = {
        {"<graph/>", 0, 1, 0},
        {"\xEF\xBB\xBF<graph languageVersion='2'><metadata name='version'/></graph>", 0, 2, 1},
        {"<graph languageVersion='x'><metadata name='version' value='x'/></graph>", 0, 1, 1},
        {"<graph languageVersion='-3'><metadata name='version' value=' 4x'/></graph>", 0, -3, 4},
        {"<graph languageVersion='99999999999'/>", 0, 2147483647, 0},
        {"<graph languageVersion='2'><metadata name='version' value='5'/><oops", 0, 2, 5},
        {"<!--graph--><a/>", 1, 0, 0},
        {"<a><graph/></a>", 1, 0, 0},
        {"<Graph/>", 1, 0, 0},
        {"", 1, 0, 0},
        {"graph", 1, 0, 0},
    };
    for (const Case& each : cases) {
        read(each.text, each.result);
        EXPECT_EQ(graph->languageVersion, each.languageVersion) << each.text;
        EXPECT_EQ(graph->version, each.version) << each.text;
    }
}

TEST_F(GraphReaderTest, readsConnections) {
    struct Case {
        const char* attributes;
        const char *from, *fromOutput, *to, *toInput;
        pbConnectionKind kind;
    };
    const Case cases[] = {
        {"fromImage='i' toNode='n' toInput='src'", "i", "", "n", "src", ImageToNode},
        {"fromNode='n' fromOutput='o' toNode='m' toInput='s'", "n", "o", "m", "s", NodeToNode},
        {"fromNode='n' fromOutput='o' toImage='out' toInput='s'", "n", "o", "out", "",
         ToOutputImage},
        {"fromImage='i' fromNode='n' fromOutput='o' toImage='out'", "i", "", "out", "",
         ToOutputImage},
        {"fromImage='' toNode='n'", "", "", "n", "", ImageToNode},
        {"toNode='n'", "", "", "n", "", NodeToNode},
        {"", "", "", "", "", NodeToNode},
    };
    for (const Case& each : cases) {
        read(std::string("<connect ") + each.attributes + "/>");
        ASSERT_EQ(graph->connections.size(), 1U);
        const pbConnection& connection = graph->connections[0];
        EXPECT_EQ(nameText(connection.from), each.from) << each.attributes;
        EXPECT_EQ(nameText(connection.fromOutput), each.fromOutput) << each.attributes;
        EXPECT_EQ(nameText(connection.to), each.to) << each.attributes;
        EXPECT_EQ(nameText(connection.toInput), each.toInput) << each.attributes;
        EXPECT_EQ(connection.kind, each.kind) << each.attributes;
    }
}

TEST_F(GraphReaderTest, readsValueTextsInAnyLocale) {
    struct Case {
        pbElementType type;
        const char* text;
        pbValue value;
    };
    const Case cases[] = {
        {pbTypeInt, " -7", ints({-7})},
        {pbTypeInt2, "1, 2,3", ints({1, 2})},
        {pbTypeInt3, "1,x,3", ints({1})},
        {pbTypeInt4, "1.5,2", ints({1})},
        {pbTypeInt, "99999999999", ints({2147483647})},
        {pbTypeFloat, "1.5", floats({1.5F})},
        {pbTypeFloat2, "0.5,0.25", floats({0.5F, 0.25F})},
        {pbTypeFloat2, "float2(0.5,0.25)", floats({})},
        {pbTypeFloat2, "0.5 ,0.25", floats({0.5F})},
        {pbTypePixel3, "1e2, -.5,+3.", floats({100, -0.5F, 3})},
        {pbTypeFloat2x2, "1,2,3,4,5", floats({1, 2, 3, 4})},
        {pbTypeFloat3x3, "1,2,3,4,5,6,7,8,9,10", floats({1, 2, 3, 4, 5, 6, 7, 8, 9})},
        {pbTypeFloat, "1e99", floats({3.40282347e38F})},
        {pbTypeBool, "true", bools({1})},
        {pbTypeBool, " true", bools({})},
        {pbTypeBool2, "true,false", bools({1})},
        {pbTypeBool2, "false, true", bools({0, 1})},
        {pbTypeBool2, "true,true,", bools({1})},
        {pbTypeBool3, "true, false, true", bools({1})},
        {pbTypeBool4, "true,true,false, \ttrue x", bools({1, 1, 0, 1})},
        {pbTypeBool4, ",true,true,true", bools({})},
        {pbTypeBool2, "abcdefghijklmnopqrstuvwxyz0123456789,true", bools({0, 1})},
        {pbTypeString, "1", ints({})},
        {pbTypeImage4, "1,2,3,4", ints({})},
        {pbTypeFloat, "", floats({})},
        {pbTypeFloat, nullptr, floats({})},
        {static_cast<pbElementType>(25), "1", floats({})},
        {static_cast<pbElementType>(-1), "1", floats({})},
    };
    const CommaLocale locale;
    for (const Case& each : cases)
        EXPECT_TRUE(parseValueText(each.text, each.type) == each.value)
            << each.type << " " << (each.text == nullptr ? "null" : each.text);
}

TEST_F(GraphReaderTest, rewritesParameterExpressions) {
    struct Case {
        const char* id;
        const char* text;
        const char* code;
    };
    const Case cases[] = {
        {"blur", "blur::radius = amount * 2.0;", "radius = tveg_amount * 2.0;"},
        {"blur", "blur::amount = amount;", "amount = tveg_amount;"},
        {"blur", "blur::x; blur;amount", "x; tveg_amount"},
        {"blur", "blur2::a = amounts + _bias;", "blur2::a = amounts + _tveg_bias;"},
        {"", "::a = blur::b;", "::a = blur::b;"},
        {"blur", "f() { { blur::a; } } g() { amount; }", "f() { { a; } }"},
        {"blur", "{\n\t\ta\n\n\r\n \tb\t}", "{\na\n\r\n \tb\t}"},
        {"blur", "{ /* amount */ a; // blur\n\tb }", "{   a; \nb }"},
        {"blur", "#define A blur amount\nblur::a", "#define A   tveg_amount\na"},
        {"blur", "/* } */ '}", "  '}"},
        {"blur", "aGraphParameterOfMoreThanThirtyOneCharacters",
         "tveg_aGraphParameterOfMoreThanThirtyOneCharacters"},
        {"blur", "", ""},
    };
    for (const Case& each : cases) {
        read("<parameter name='amount' type='float'/><parameter name='_bias' type='float'/>"
             "<parameter name='aGraphParameterOfMoreThanThirtyOneCharacters' type='int'/>"
             "<node id='" +
             std::string(each.id) + "'><evaluateParameters><![CDATA[" + each.text +
             "]]></evaluateParameters></node>");
        ASSERT_EQ(graph->nodes.size(), 1U);
        EXPECT_EQ(std::string(graph->nodes[0].evaluateParametersCode), each.code) << each.text;
    }
}

TEST_F(GraphReaderTest, endsInAnOrderlyWayWithoutMemory) {
    EXPECT_GT(failEveryAllocation([] {
                  pbGraphInfo info;
                  readGraphText(wholeDocument, info);
              }),
              20U);
}

} // namespace
