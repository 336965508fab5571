// Findings about kernels and graphs: where they are, and what they say. The driver is the real one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "engine/pixels/channel_order.h"
#include "pbhost/check/diagnostic_json.h"
#include "pbhost/check/file_check.h"
#include "pbhost/diagnostics/driver_log.h"
#include "pbhost/diagnostics/preprocessed_columns.h"
#include "pbhost/lint/kernel_outline.h"

namespace fs = std::filesystem;
using namespace std::string_literals;
using pbhost::Diagnostic;
using pbhost::Diagnostics;
using pbhost::SourceText;
using testing::HasSubstr;
using testing::Pointwise;
using Texts = std::vector<std::string>;

namespace {

MATCHER(ContainsText, "") {
    return std::get<0>(arg).find(std::get<1>(arg)) != std::string::npos;
}

std::string readText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The examples, and the kernels of the folder in the environment.
std::vector<fs::path> sampleFiles() {
    std::vector<fs::path> files;
    const char* more = std::getenv("TVELMARONDINE_KERNELS");
    for (const std::string& folder : {std::string(EXAMPLES_PATH), std::string(more ? more : "")})
        if (!folder.empty())
            for (const auto& entry : fs::directory_iterator(folder))
                if (entry.path().extension() == ".pbk" || entry.path().extension() == ".pbg")
                    files.push_back(entry.path());
    return files;
}

std::string head(const std::string& rest) {
    return "<languageVersion : 1.0;>\nkernel K < namespace : \"n\"; vendor : \"v\"; version : 1; "
           ">\n" +
           rest;
}

// A kernel without faults but those of its parts, which begin in line 4 and line 7.
std::string kernelWith(const std::string& declarations, const std::string& statements = "") {
    return head("{\n" + declarations + "\ninput image4 src; output pixel4 dst;\n" +
                "void evaluatePixel() {\n" + statements +
                "\ndst = sampleNearest(src, outCoord());\n}\n}\n");
}

class Findings : public testing::Test {
protected:
    Diagnostics check(const std::string& text, const std::string& file = "k.pbk") {
        return pbhost::checkFile(host_, compiler_, {file, text});
    }

    // "LINE:COLUMN RULE: MESSAGE" for each.
    Texts shown(const std::string& text, const std::string& file = "k.pbk") {
        Texts texts;
        for (const Diagnostic& each : check(text, file))
            texts.push_back(std::to_string(each.place.line) + ":" +
                            std::to_string(each.place.column) + " " + each.rule + ": " +
                            each.message);
        return texts;
    }

    hostkit::Host host_;
    pbhost::ProgramCompiler compiler_;
};

// A generated text of a program with the map of one of its parts.
void expectCopied(std::string_view shader, std::size_t start, const pbhost::CopiedText& part,
                  std::string_view file) {
    const std::string_view text = shader.substr(start, part.size);
    std::size_t end = 0;
    for (const SourceMap::Stretch& each : part.toFile.stretches()) {
        EXPECT_GE(each.at, end); // in order, without overlaps
        end = each.at + each.length;
        ASSERT_EQ(text.substr(each.at, each.length), file.substr(each.source, each.length));
    }
    // Every name is mapped but the words that the generator writes itself.
    const std::set<std::string_view> own = {"input",   "output", "parameter", "dependent",
                                            "varying", "ifdef",  "endif",     "tvek_VERTEX_SHADER"};
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view word = pbhost::wordAt(text, at);
        if (word.empty())
            continue;
        const bool isMapped = part.toFile.sourceOf(at + word.size() - 1).has_value();
        EXPECT_TRUE(isMapped || own.contains(word)) << word;
        at += word.size();
    }
}

} // namespace

TEST_F(Findings, TheSourceMapLeadsToEqualText) {
    int programs = 0;
    std::vector<std::pair<std::string, std::string>> texts = {
        {"crlf.pbk", "kernel K\r\n{\r\n#define A \\\r\n 1\r\n/* a\r\n*/ input image4 a, b; union "
                     "// c\r\n x;}\r\n"},
        {"plain.pbg", "<graph><kernel>\n kernel K  { a &lt; b;\n c }</kernel><parameter name='p' "
                      "type='int'/><node id='n' name='K'><evaluateParameters> n::x = p &gt; 1;\n y "
                      "</evaluateParameters></node></graph>"}};
    for (const fs::path& path : sampleFiles())
        texts.emplace_back(path.filename(), readText(path));
    for (const auto& [name, text] : texts) {
        SCOPED_TRACE(name);
        const pbhost::EffectFile file(host_, name, text);
        const pbhost::MappedFile mapped(file);
        for (std::size_t i = 0; i < mapped.count(); ++i) {
            const auto program = mapped.program(i, hostSwizzle);
            ASSERT_TRUE(program);
            NarrowString vertex, fragment;
            if (file.isGraph)
                generateNodeShaders(file.graph, i, vertex, fragment, hostSwizzle);
            else
                generateKernelShaders(file.kernel, vertex, fragment, hostSwizzle);
            EXPECT_EQ(program->vertex, vertex);
            EXPECT_EQ(program->fragment, fragment);
            for (const auto& [shader, layout] : {std::pair(&vertex, program->layout.vertex),
                                                 {&fragment, program->layout.fragment}}) {
                expectCopied(*shader, layout.body, program->body, file.text);
                expectCopied(*shader, layout.expressions, program->expressions, file.text);
            }
            ++programs;
        }
    }
    EXPECT_GT(programs, 20);
}

TEST(DriverLog, IsReadInTheFormsOfAllDrivers) {
    const std::tuple<const char*, std::size_t, std::size_t, bool, const char*> cases[] = {
        // log, line, column, is error, text
        {"0:72(16): error: `foo' undeclared", 72, 16, true, "`foo' undeclared"},
        {"0:7(1): warning: `x' used uninitialized", 7, 1, false, "`x' used uninitialized"},
        {"0:3(2): preprocessor error: #endif", 3, 2, true, "#endif"},
        {"0(72) : error C1008: undefined variable \"foo\"", 72, 0, true,
         "undefined variable \"foo\""},
        {"0(9) : warning C7011: implicit cast", 9, 0, false, "implicit cast"},
        {"ERROR: 0:72: 'foo' : undeclared identifier ", 72, 0, true,
         "'foo' : undeclared identifier"},
        {"WARNING: 0:4: extension", 4, 0, false, "extension"},
        {"error: unresolved reference to function `f'", 0, 0, true,
         "unresolved reference to function `f'"},
        {"something else", 0, 0, true, "something else"},
    };
    for (const auto& [log, line, column, isError, text] : cases) {
        const auto messages = pbhost::parseDriverLog("\n"s + log + "\n2 compilation errors\n");
        ASSERT_EQ(messages.size(), 1U) << log;
        EXPECT_EQ(messages[0].line, line) << log;
        EXPECT_EQ(messages[0].column, column) << log;
        EXPECT_EQ(messages[0].severity == pbhost::Severity::Error, isError) << log;
        EXPECT_EQ(messages[0].text, text) << log;
    }
    // What follows from an undeclared name is dropped, but not an error of a later line.
    const auto kept = pbhost::parseDriverLog(
        "0:2(9): error: `a' undeclared\n"
        "0:1(1): error: operands to arithmetic operators must be numeric\n"
        "0:2(5): error: no matching function for call to `f(error)'; candidates are:\n"
        "0:2(5): error:    float f(float)\n"
        "0:3(1): error: operands to arithmetic operators must be numeric\n");
    ASSERT_EQ(kept.size(), 2U);
    EXPECT_TRUE(kept[0].candidates.empty());
    EXPECT_EQ(kept[1].line, 3U);
}

TEST(PreprocessedColumns, AreThoseOfTheLine) {
    const std::string shader = "#define float4 vec4\n#define twice(a, b) (a * 2 + \\\n  b)\n"
                               "#define nest twice(x, float4)\n#define loop loop loop\n#define e\n";
    const pbhost::PreprocessedColumns columns(shader);
    const std::tuple<std::string, std::size_t, const char*> cases[] = {
        // line, column of the preprocessed line, what stands there in the line
        {"abc def", 5, "def"},
        {"\t  float4   abc;", 7, "abc;"}, // " vec4 abc;"
        {"float4 abc", 3, "float4 abc"},  // inside of an expansion
        {"a /* c */  b // d", 3, "b // d"},
        {"twice( foo , bar) + z", 2, "foo , bar) + z"}, // "(foo * 2 + bar) + z"
        {"twice( foo , bar) + z", 12, "bar) + z"},
        {"twice( foo , bar) + z", 19, "z"},
        {"nest z", 16, "z"}, // "(x * 2 + vec4) z"
        {"twice z", 7, "z"}, // not a call
        {"e e foo", 5, "foo"},
        {"a \\\n  b", 3, "b"},
        {"ab", 9, ""},
    };
    for (const auto& [line, column, rest] : cases) {
        const std::size_t at = columns.offsetOfColumn(100, line, column);
        EXPECT_EQ(line.substr(at), rest) << line << ", " << column;
    }
    EXPECT_EQ(columns.offsetOfColumn(100, "loop", 200'000), 4U); // its expansion ends before
    EXPECT_EQ(columns.offsetOfColumn(1, "float4 a", 8), 7U);     // not yet defined
}

TEST_F(Findings, AreAtTheirPlacesInKernels) {
    const std::tuple<std::string, Texts> cases[] = {
        {kernelWith(""), {}},
        {kernelWith("", "float a = foo;"), {"7:11 compile-error: `foo' undeclared"}},
        {kernelWith("", "float a = 1.0 + \\\n    foo;"), {"8:5 compile-error: `foo' undeclared"}},
        {kernelWith("/* a\n b */ float f(float x) { return  x + foo; }"),
         {"5:38 compile-error: `foo' undeclared"}},
        {kernelWith("dependent int d; dependent float e; void evaluateDependents() { d = foo; }"),
         {"4:69 compile-error: `foo' undeclared"}},
        {kernelWith("dependent int d; void evaluateDependents() { d = 1; }", "d = true;"),
         {"7:1 compile-error: value of type bool cannot be assigned to variable of type int"}},
        {kernelWith("", "float3 a = sampleNearest(src, outCoord());"),
         {"7:1 compile-error: initializer of type float4 (vec4) cannot be assigned to variable of "
          "type float3"}},
        {kernelWith("", "float a = smoothStep(1.0);"),
         {"7:11 compile-error: no matching function for call to `smoothStep(float)'"}},
        {kernelWith("", "float a = 1.0\nfloat b = 2.0;"), {"8:1 compile-error: syntax error"}},
        {head("{ void evaluatePixel() { dst = 1.0; } }"),
         {"2:8 output: the output is missing", "3:26 compile-error: `dst' undeclared"}},
        {head("{ output pixel4 dst; }"), {"2:8 no-function: the function is missing"}},
        {head("{ output pixel3 dst; void evaluatePixel() { dst = float3(1.0); } }"),
         {"3:10 output: the output must have four channels"}},
        {"", {"1:1 no-kernel: no kernel was found"}},
        {"kernal K { output pixel4 dst; void evaluatePixel() { dst = float4(1.0); } }",
         {"1:1 kernel-keyword: \"kernal\" is not", "1:1 language-version",
          "1:1 kernel-keyword: the kernel has no name"}},
        {"<languageVersion : 1.0;> kernel K { output pixel4 dst; void evaluatePixel() { dst = "
         "float4(1.0); } } // end\n kernel L {}",
         {"1:33 no-metadata: kernel \"K\" has no metadata", "2:2 second-kernel"}},
        {kernelWith("") + "rest", {"11:1 text-behind-kernel"}},
        {kernelWith("", "    if (true) {\n    dst = float4(1.0);"), {"7:15 unclosed-brace"}},
        {kernelWith("", "/* open"), {"", "7:1 unclosed-comment"}},
        {kernelWith("", "float filter = 1.0;"),
         {"7:7 reserved-word: \"filter\" is a reserved word"}},
        {kernelWith("", "float a = float(1/2) + float(4/2);"),
         {"7:17 integer-division: 1/2 divides"}},
        {kernelWith("const int N = 200000;", "for (int i = 0; i < N; ++i) dst.x += 1.0;\n"
                                             "for (int i = 0; i < 65535; ++i) dst.x += 1.0;"),
         {"7:21 loop-bound"}},
        {kernelWith("input image4 b, c; input image4 d, e;"),
         {"5:14 too-many-inputs: the effect feeds 4"}},
        {kernelWith("parameter float a_name_that_is_longer_than_its_field < maxValue: 1.0; >;\n"
                    "parameter float a_name_that_is_longer_than_its_other < maxValue: 1.0; >;"),
         {"5:17 long-name: the first 31 bytes are also those of"}},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_THAT(shown(text), Pointwise(ContainsText(), expected));
    }
}

// A parameter's declaration in line 4, each with what is found.
TEST_F(Findings, AreAboutTheValuesOfParameters) {
    const std::pair<std::string, Texts> cases[] = {
        {"float a < minValue: 0.0; maxValue: 2.0; defaultValue: 1.0; description: \"d\"; >", {}},
        {"float a < maxValue: 2.0; defaultVale: 1.0; >",
         {"4:36 unknown-key: the key \"defaultVale\" is unknown and has no effect; "
          "\"defaultValue\" may"}},
        {"float a < maxValue: 2.0; colour: 1.0; >", {"4:36 unknown-key: the key \"colour\" is"}},
        {"float a < maxValue: 2.0; defaultValue: float3(1.0, 1.0, 1.0); >",
         {"4:50 value-count: the value has 3 numbers, and float takes 1; the others are ignored"}},
        {"float a < maxValue: 2.0; defaultValue: int(1); >",
         {"4:50 value-kind: the value is of type int"}},
        {"float a < maxValue: 2.0; defaultValue: \"hello\"; >",
         {"4:50 value-kind: a text in quotes"}},
        {"float a < maxValue: 2.0; defaultValue: 1e-3; >",
         {"4:50 value-kind: an exponent is not read"}},
        {"int a < maxValue: 2; defaultValue: 0.5; >",
         {"4:46 value-kind: the value has a fraction"}},
        {"float3 a < maxValue: float3(1.0, 1.0, 1.0); defaultValue: float3(0.5); >",
         {"4:69 value-count: the value has 1 number, and float3 takes 3; what is missing is 0; for "
          "the "
          "same in all write float3(0.5, 0.5, 0.5)"}},
        {"float3 a < minValue: float3(0.0); maxValue: float3(1.0, 1.0, 1.0); >", {}},
        {"float a < minValue: 0.0; maxValue: 2.0; defaultValue: 3.0; >",
         {"4:51 default-range: the default 3 is outside of the range 0 to 2"}},
        {"float a < minValue: 2.0; maxValue: 1.0; >",
         {"4:36 range: parameter \"a\" has an empty range;"}},
        {"float a < defaultValue: 0.0; >",
         {"4:17 range: parameter \"a\" has neither minValue nor maxValue"}},
        {"bool a", {}},
        {"float a < minValue = 0.0; maxValue: 2.0; >",
         {"4:30 metadata-syntax: the separator behind"}},
        {"float a < maxValue: 2.0 defaultValue: 1.0; >",
         {"4:31 metadata-syntax: a ';' is missing behind the value of \"maxValue\"; "
          "\"defaultValue\""}},
        {"float a < maxValue: 2.0; aeUIControl: \"aeColour\"; >",
         {"4:50 unknown-word: aeUIControl has no value \"aeColour\"; there are \"aeColor\""}},
        {"float a < maxValue: 2.0; aeUIControl: \"aeColor\"; >",
         {"4:36 control-type: \"aeColor\" is for a parameter of type float3 or float4, not float"}},
        {"int2 a < aeUIControl: \"aePoint\"; >",
         {"4:20 control-type: \"aePoint\" is for a parameter of type float2"}},
    };
    for (const auto& [declaration, expected] : cases) {
        SCOPED_TRACE(declaration);
        EXPECT_THAT(shown(kernelWith("parameter " + declaration + ";")),
                    Pointwise(ContainsText(), expected));
    }
}

// Elements of a graph whose lines are known; in line 2 its images, in 4 to 8 a kernel.
std::string graphWith(const std::string& elements) {
    return "<graph name='G'>\n<inputImage type='image4' name='in'/><outputImage type='pixel4' "
           "name='out'/>\n<kernel><![CDATA[" +
           head("{ parameter float gain;\ninput image4 src; output pixel4 dst;\nvoid "
                "evaluatePixel() { "
                "dst = gain * sampleNearest(src, outCoord()); } }\n") +
           "]]></kernel>\n" + elements + "</graph>\n";
}

TEST_F(Findings, AreAtTheirPlacesInGraphs) {
    const std::string a = "<node id='a' name='K'><evaluateParameters>void evaluateParameters() {\n"
                          "a::gain = 1.0;\n}</evaluateParameters></node>\n";
    const std::string in = "<connect fromImage='in' toNode='a' toInput='src'/>\n";
    const std::string out = "<connect fromNode='a' fromOutput='dst' toImage='out'/>\n";
    const auto with = [](std::string text, const std::string& old, const std::string& fresh) {
        return text.replace(text.find(old), old.size(), fresh);
    };
    const std::pair<std::string, Texts> cases[] = {
        {graphWith(a + in + out), {}},
        {with(graphWith(a + in + out), "gain *", "gian *"),
         {"7:30 compile-error: `gian' undeclared"}},
        {with(graphWith(a + in + out), "= 1.0", "= one"),
         {"10:11 compile-error: `one' undeclared"}},
        {graphWith(a + in + out + "<node id='b' name='J'/>"),
         {"14:2 graph-kernel: node \"b\": the graph has no kernel \"J\"; there is \"K\"",
          "14:11 graph-node: nothing reads node \"b\""}},
        {graphWith(a + with(in, "src", "scr") + out),
         {"9:2 graph-input: input \"src\" of node \"a\"", "12:2 graph-connection: the connection"}},
        {graphWith(a + in + with(out, "'dst'", "'dest'")),
         {"13:35 graph-connection: kernel \"K\" has no output \"dest\"; there is \"dst\""}},
        {graphWith(a + in + with(out, "'out'", "'put'")),
         {"13:49 graph-connection: there is no output image \"put\"; there is \"out\""}},
        {graphWith(a + with(in, "fromImage='in'", "fromNode='a'") + out),
         {"9:2 graph-cycle: these nodes form a cycle: \"a\" -> \"a\""}},
        {graphWith(a + in),
         {"1:2 graph-output: no connection leads", "9:11 graph-node: nothing reads node \"a\""}},
        {graphWith(a + in + with(out, "toImage", "toImge")),
         {"1:2 graph-output", "13:2 missing-attribute: the connection has neither \"toImage\" nor",
          "13:40 unknown-attribute: the attribute \"toImge\" of \"connect\""}},
        {graphWith(a + in + with(out, "/>", ">")),
         {"14:3 xml: XML: \"</graph>\" does not close the innermost element, which is "
          "\"connect\""}},
        {graphWith(with(a, "id='a'", "id='a' id='b'") + in + out),
         {"9:14 xml: XML: the attribute \"id\" is given"}},
        {graphWith(a + in + out + "<knode/>"),
         {"14:2 unknown-element: the element \"knode\" is unknown"}},
        {graphWith(a + in + out +
                   "<parameter name='p' type='float'><metadata name='maxValu' value='1'/>"
                   "<metadata name='maxValue' value='1,2'/></parameter>"),
         {"14:50 unknown-key: the key \"maxValu\"", "14:103 value-count: the value has 2 numbers"}},
        {"", {"0:0 no-graph: no node was found"}},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_THAT(shown(text, "g.pbg"), Pointwise(ContainsText(), expected));
    }
}

TEST(SourceTexts, HavePlacesInBytesAndCodeUnits) {
    const std::string text = "a\r\nb\rc\n\nd\xC3\xA9\xF0\x9D\x84\x9E"
                             "e";
    const SourceText source(text);
    EXPECT_EQ(source.lines(), 5U);
    EXPECT_EQ(source.line(1), "a");
    EXPECT_EQ(source.line(3), "c");
    EXPECT_EQ(source.line(6), "");
    const std::tuple<std::size_t, std::size_t, std::size_t> places[] = {
        {0, 1, 1}, {3, 2, 1}, {5, 3, 1}, {7, 4, 1}, {8, 5, 1}, {15, 5, 8}, {99, 5, 9}};
    for (const auto& [offset, line, column] : places) {
        EXPECT_EQ(source.placeOf(offset).line, line) << offset;
        EXPECT_EQ(source.placeOf(offset).column, column) << offset;
    }
    EXPECT_EQ(pbhost::utf16Length(source.line(5), 7), 4U);
}
