#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "engine/glsl_generator.h"
#include "pbhost/command.h"
#include "pbhost/effect_file.h"
#include "pbhost/model_verb.h"
#include "pbhost/picture.h"
#include "pbhost/translate_verb.h"

namespace fs = std::filesystem;
using namespace std::string_literals;
using nlohmann::json;
using pbhost::Depth;
using pbhost::Picture;
using pbhost::readPicture;

namespace {

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string kernelText(const std::string& body) {
    return "<languageVersion : 1.0;>\nkernel Mine < namespace: \"n\"; version: 1; >\n{" + body +
           "}";
}

std::string pixelKernel(const std::string& statement) {
    return kernelText("input image4 src; output pixel4 dst;\nvoid evaluatePixel() {\n" + statement +
                      "\n}");
}

// Two nodes, a and b, and one kernel, which both run unless b is to run another.
std::string graphText(const std::string& kernel, const std::string& connections,
                      const std::string& kernelOfB = "Mine") {
    return "<graph name=\"Pair\"><inputImage type=\"image4\" name=\"in\"/>"
           "<outputImage type=\"pixel4\" name=\"out\"/><kernel><![CDATA[" +
           kernel + "]]></kernel><node id=\"a\" name=\"Mine\"/><node id=\"b\" name=\"" + kernelOfB +
           "\"/>" + connections + "</graph>";
}

// `in` or a node, to a node or to `out`.
std::string connect(const std::string& from, const std::string& to) {
    return (from == "in" ? "<connect fromImage=\"in\""
                         : "<connect fromNode=\"" + from + "\" fromOutput=\"dst\"") +
           (to == "out" ? " toImage=\"out\"/>" : " toNode=\"" + to + "\" toInput=\"src\"/>");
}

const std::string copyText = pixelKernel("dst = sampleNearest(src, outCoord());");
const std::string brokenText = pixelKernel("dst = sampleNearst(src, outCoord());");

struct Result {
    int code = -1;
    std::string out, err;
};

struct Case {
    std::string arguments;
    int code = 0;
    std::vector<std::string> messages = {}; // each stands somewhere on standard error
    std::string environment = "";
    Result result = {};
};

// The program, as a user runs it in a folder of his own.
class Pbhost : public testing::Test {
protected:
    Pbhost() {
        std::string pattern = (fs::temp_directory_path() / "pbhost_test.XXXXXX").string();
        EXPECT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        pbhost::writePicture(folder / "in.png", paint(Depth::Bits8));
        write("copy.pbk", copyText);
        write("old.png", "old");
    }
    ~Pbhost() override { fs::remove_all(folder); }

    // Arguments and environment are text for the shell. May run in any thread.
    Result run(const std::string& arguments, const std::string& environment = "") const {
        static std::atomic<int> runs = 0;
        const std::string out = folder.string() + ".out" + std::to_string(++runs);
        const std::string line = "cd '" + folder.string() + "' && " + environment +
                                 " '" PBHOST_PATH "' " + arguments + " </dev/null >'" + out +
                                 "' 2>'" + out + ".err'";
        const int status = std::system(line.c_str());
        Result result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out),
                      readFile(out + ".err")};
        fs::remove(out);
        fs::remove(out + ".err");
        return result;
    }

    // Two at a time: most of a run is the loading of the program's libraries.
    void runAll(std::vector<Case>& cases) const {
        std::atomic<std::size_t> next = 0;
        const auto work = [&] {
            for (std::size_t i = next++; i < cases.size(); i = next++)
                cases[i].result = run(cases[i].arguments, cases[i].environment);
        };
        const std::jthread other(work);
        work();
    }

    // A failure says why, and leaves standard output and the folder as they were.
    void expectFailures(std::vector<Case> cases) const {
        const auto before = fileCount();
        runAll(cases);
        for (const Case& test : cases) {
            SCOPED_TRACE(test.arguments + "\n" + test.result.err);
            EXPECT_EQ(test.result.code, test.code);
            EXPECT_EQ(test.result.out, "");
            for (const std::string& message : test.messages)
                EXPECT_NE(test.result.err.find(message), std::string::npos) << message;
        }
        EXPECT_EQ(fileCount(), before);
        EXPECT_EQ(readFile(folder / "old.png"), "old");
    }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    std::ptrdiff_t fileCount() const { return std::distance(fs::directory_iterator(folder), {}); }

    // Another value in each channel of each pixel, colours without alpha among them.
    static Picture paint(Depth depth) {
        Picture picture = pbhost::makePicture(9, 6, depth);
        const unsigned bytes = pbhost::bytesPerChannel(depth);
        for (unsigned i = 0; i < 9 * 6 * 4; ++i) {
            const unsigned whole = i % 16 == 0 ? 0 : bytes == 1 ? i * 37 % 256 : i * 151;
            const float real = static_cast<float>(whole) / 9999.0F - 0.5F;
            std::memcpy(picture.pixels.data() + std::size_t{i} * bytes,
                        bytes == 4 ? static_cast<const void*>(&real) : &whole, bytes);
        }
        return picture;
    }

    fs::path folder;
    const std::string examples = EXAMPLES_PATH "/";
};

} // namespace

TEST_F(Pbhost, NamesTheFileThatCannotBeUsed) {
    write("broken.pbk", brokenText);
    write("pixel3.pbk",
          kernelText("output pixel3 dst; void evaluatePixel() { dst = pixel3(1.0); }"));
    write("empty.pbk", "");
    std::string inputs;
    for (int i = 0; i < 9; ++i)
        inputs += "input image4 s" + std::to_string(i) + ";\n";
    write("nine.pbk", kernelText(inputs + "output pixel4 dst;\nvoid evaluatePixel() {}"));
    write("noOutput.pbg", graphText(copyText, connect("in", "a")));
    write("cycle.pbg",
          graphText(copyText, connect("a", "b") + connect("b", "a") + connect("a", "out")));
    write("broken.pbg", graphText(brokenText, connect("in", "a") + connect("a", "out")));
    write("torn.png", readFile(folder / "in.png").substr(0, 100));
    const std::string quoted = "\n      dst = sampleNearst(src, outCoord());\n";
    expectFailures({
        {"render missing.pbk -o old.png", 3, {"missing.pbk", "No such file"}},
        {"render in.txt -o old.png", 3, {"in.txt", ".pbk"}},
        {"render broken.pbk -i in.png -o old.png", 3, {"broken.pbk", "Mine, vertex", quoted}},
        {"render broken.pbg -i in.png -o new.png", 3, {"broken.pbg", "  a, vertex", quoted}},
        {"render pixel3.pbk -o old.png", 3, {"pixel3.pbk", "output must have four channels"}},
        {"render empty.pbk -o old.png", 3, {"empty.pbk", "no kernel was found"}},
        {"render nine.pbk -o old.png", 3, {"nine.pbk", "Too many inputs.", "has 9 inputs, and 8"}},
        {"render noOutput.pbg -o old.png", 3, {"noOutput.pbg", "No output node."}},
        {"render cycle.pbg -o old.png", 3, {"cycle.pbg", "Cyclick Dependency detected."}},
        {"render copy.pbk -i missing.png -o old.png", 4, {"missing.png", "no such file"}},
        {"render copy.pbk -i torn.png -o old.png", 4, {"torn.png"}},
        {"render copy.pbk -i in.png -o in.png/x.png", 1, {"in.png/x.png"}},
        {"model missing.pbg", 3, {"missing.pbg"}},
    });
}

TEST_F(Pbhost, ExplainsWhatItDoesNotUnderstand) {
    write("graph.pbg", graphText(copyText, connect("in", "a") + connect("a", "out")));
    write("set.pbk",
          kernelText("parameter float2 place; parameter int count; parameter bool isOn;\n"
                     "output pixel4 dst;\nvoid evaluatePixel() { dst = float4(1.0); }"));
    expectFailures({
        {"render copy.pbk -i in.png -i in.png -o old.png", 2, {"takes 1 picture, 2 are given"}},
        {"render set.pbk -o old.png --set size=1", 2, {"size", "place, count, isOn"}},
        {"render set.pbk -o old.png --set place=1", 2, {"place", "takes 2 values, 1 is given"}},
        {"render set.pbk -o old.png --set place=1,nan", 2, {"\"nan\" is not a number"}},
        {"render set.pbk -o old.png --set count=1.5", 2, {"\"1.5\" is not a whole number"}},
        {"render set.pbk -o old.png --set isOn=yes", 2, {"\"yes\" is neither true nor false"}},
        {"render set.pbk -o old.png --set isOn", 2, {"NAME=VALUE"}},
        {"render copy.pbk -o old.png --depth 12", 2, {"--depth", "12"}},
        {"render copy.pbk -o old.png --size 4x", 2, {"--size 4x", "WIDTHxHEIGHT"}},
        {"render copy.pbk -o old.png --size 99999x1", 1, {"larger than"}},
        {"render copy.pbk -o old.png",
         1,
         {"lacks an OpenGL context"},
         "__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent"},
        {"render copy.pbk", 2, {"--output"}},
        {"translate copy.pbk --order 24", 2, {"--order", "24"}},
        {"translate copy.pbk --node a", 2, {"--node goes with a graph"}},
        {"translate graph.pbg --node c", 3, {"\"c\""}},
        {"translate graph.pbg --stage vertex", 2, {"--node"}},
        {"rendr", 2, {"rendr"}},
        {"", 2, {"render", "translate", "model"}},
    });
}

TEST_F(Pbhost, ServesEveryExample) {
    const pbhost::Command command;
    std::vector<Case> cases;
    std::vector<unsigned> heights;
    for (const auto& entry : fs::directory_iterator(examples)) {
        const std::string file = entry.path().string();
        if (!file.ends_with(".pbk") && !file.ends_with(".pbg"))
            continue;
        EXPECT_NE(pbhost::translate({file, "", "", 18}), "");
        const json inputs = json::parse(pbhost::modelAsJson(file))["inputs"];
        heights.push_back(inputs.empty() ? 360 : 6);
        cases.push_back({"render '" + file + "' -o " + std::to_string(cases.size()) + ".png"});
        for (std::size_t i = 0; i < inputs.size(); ++i)
            cases.back().arguments += " -i in.png";
    }
    EXPECT_GT(cases.size(), 10U);
    runAll(cases);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].arguments);
        EXPECT_EQ(cases[i].result.code, 0);
        EXPECT_EQ(cases[i].result.out + cases[i].result.err, "");
        EXPECT_EQ(readPicture(folder / (std::to_string(i) + ".png")).height, heights[i]);
    }
}

TEST_F(Pbhost, CopiesEveryValueAtEveryDepth) {
    const std::pair<Depth, const char*> cases[] = {
        {Depth::Bits8, ".png"}, {Depth::Bits16, ".png"}, {Depth::Bits32, ".exr"}};
    for (const auto& [depth, extension] : cases) {
        const auto from = "from"s + extension, to = "to"s + extension;
        pbhost::writePicture(folder / from, paint(depth));
        EXPECT_EQ(run("render '" + examples + "copy.pbk' -i " + from + " -o " + to).code, 0);
        EXPECT_EQ(readPicture(folder / to).depth, depth);
        EXPECT_EQ(readPicture(folder / to).pixels, paint(depth).pixels) << from;
    }
}

TEST_F(Pbhost, SetsParametersOfEveryKind) {
    write("set.pbk",
          kernelText("parameter float gain < defaultValue: 0.25; >;\n"
                     "parameter int count < defaultValue: 3; >;\n"
                     "parameter bool isOn < defaultValue: true; >;\n"
                     "parameter float3 tone < aeUIControl: \"aeColor\"; >;\n"
                     "parameter int mode < aeUIControl: \"aePopup\"; aePopupString: \"a|b\"; >;\n"
                     "parameter float2 at < aeUIControl: \"aePoint\";\n"
                     "    aePointRelativeDefaultValue: float2(0.5, 0.25); >;\n"
                     "output pixel4 dst;\nvoid evaluatePixel() {\n"
                     "    dst = float4(gain + at.x, float(count) + at.y,\n"
                     "                 isOn ? tone.g + tone.b : -1.0, float(mode)); }"));
    const std::pair<const char*, std::array<float, 4>> cases[] = {
        // alpha, red, green, blue; the point lies in a picture of 4 by 4
        {"", {0, 2.25F, 4, 0}},
        {"--set gain=-1.5e1", {0, -13, 4, 0}},
        {"--set count=-7 --set at=0.5,+1", {0, 0.75F, -6, 0}},
        {"--set isOn=false --set mode=1 --set tone=1,1,1", {1, 2.25F, 4, -1}},
        {"--set isOn=1 --set tone=0.5,0.25,0.125", {0, 2.25F, 4, 0.375F}},
        {"--set gain=1 --set gain=2", {0, 4, 4, 0}},
    };
    for (const auto& [settings, argb] : cases) {
        const Result result = run("render set.pbk -o out.exr --depth 32 --size 4x4 "s + settings);
        SCOPED_TRACE(settings + result.err);
        ASSERT_EQ(result.code, 0);
        const Picture picture = readPicture(folder / "out.exr");
        ASSERT_EQ(picture.pixels.size(), 4U * 4 * 16);
        for (std::size_t at = 0; at < picture.pixels.size(); at += 16)
            EXPECT_EQ(std::memcmp(&picture.pixels[at], argb.data(), 16), 0) << at;
    }
}

TEST_F(Pbhost, ShowsTheGeneratedTexts) {
    const pbhost::Command command;
    pbKernelInfo kernel;
    pbGraphInfo graph;
    pbhost::readKernelFile(examples + "tint.pbk", kernel);
    pbhost::readGraphFile(examples + "dissolve.pbg", graph);
    NarrowString vertex, fragment, nodeFragment;
    generateKernelShaders(kernel, vertex, fragment, 9);
    ASSERT_EQ(generateNodeShaders(graph, 0, vertex, nodeFragment, 18), 0);
    const auto translate = [&](const std::string& file, const std::string& options) {
        return run("translate '" + examples + file + "' " + options).out;
    };
    EXPECT_EQ(translate("tint.pbk", "--stage fragment --order 9"), std::string(fragment));
    EXPECT_EQ(translate("dissolve.pbg", "--node scatter --stage fragment"),
              std::string(nodeFragment));
    EXPECT_NE(translate("dissolve.pbg", "").find("scatter  ScatteredSwitch\n"), std::string::npos);
}

TEST_F(Pbhost, ShowsTheModel) {
    const json tint = json::parse(run("model '" + examples + "tint.pbk'").out);
    EXPECT_EQ(tint["name"], "Tint");
    EXPECT_EQ(tint["inputs"], json::parse(R"([{"type": "image4", "name": "src"}])"));
    EXPECT_EQ(tint["parameters"][0]["defaultValue"]["value"], json::parse("[0.1, 0.06, 0.3]"));
    EXPECT_EQ(tint["parameters"][2]["maxValue"],
              json::parse(R"({"isSet": true, "value": [100.0]})"));
    const json graph = json::parse(run("model '" + examples + "dissolve.pbg'").out);
    EXPECT_EQ(graph["connections"][2], json::parse(R"({"from": "scatter", "fromOutput": "dst",
        "to": "dst", "toInput": "", "kind": "ToOutputImage"})"));
    EXPECT_EQ(graph["nodes"][0]["evaluateParametersCode"],
              "\nvoid evaluateParameters()\n{\n    share = tveg_progress / 100.0;\n"
              "    side = float(tveg_grain);\n}");
}

TEST_F(Pbhost, RendersAGraphWithANodeThatHasNoKernel) {
    write(
        "half.pbg",
        graphText(copyText, connect("in", "a") + connect("a", "b") + connect("a", "out"), "Lost"));
    const Result result = run("render half.pbg -i in.png -o out.png");
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.err.find("node \"b\": the graph has no kernel \"Lost\""), std::string::npos);
    EXPECT_EQ(readPicture(folder / "out.png").pixels, paint(Depth::Bits8).pixels);
}
