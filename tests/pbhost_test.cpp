#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "pbhost/command.h"
#include "pbhost/effect_file.h"
#include "pbhost/failure.h"
#include "pbhost/model_verb.h"
#include "pbhost/render_verb.h"
#include "pbhost/translate_verb.h"

namespace fs = std::filesystem;
using namespace std::string_literals;
using nlohmann::json;
using pbhost::Depth;
using pbhost::Picture;
using pbhost::readPicture;
using Texts = std::vector<std::string>;

namespace {

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
void write(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
}

std::string kernelText(const std::string& body) {
    return "<languageVersion : 1.0;>\nkernel Mine < namespace: \"n\"; version: 1; >\n{" + body +
           "}";
}
std::string copyText(const std::string& function) {
    return kernelText("input image4 src; output pixel4 dst;\nvoid evaluatePixel() {\ndst = " +
                      function + "(src, outCoord());\n}");
}

const std::string setText =
    kernelText("parameter float gain < defaultValue: 0.25; >;\n"
               "parameter int count < defaultValue: 3; >;\n"
               "parameter bool isOn < defaultValue: true; >;\n"
               "parameter float3 tone < aeUIControl: \"aeColor\"; >;\n"
               "parameter int mode < aeUIControl: \"aePopup\"; aePopupString: \"a|b\"; >;\n"
               "parameter float2 at < aeUIControl: \"aePoint\";\n"
               "    aePointRelativeDefaultValue: float2(0.5, 0.25); >;\n"
               "output pixel4 dst;\nvoid evaluatePixel() {\n"
               "    dst = float4(gain + at.x, float(count) + at.y,\n"
               "                 isOn ? tone.g + tone.b : -1.0, float(mode)); }");

// The picture through node a; node b has no kernel.
std::string graphText(const std::string& kernel) {
    return R"(<graph name="Pair"><inputImage type="image4" name="in"/>
        <outputImage type="pixel4" name="out"/><kernel><![CDATA[)" +
           kernel + R"(]]></kernel><node id="a" name="Mine"/><node id="b" name="Lost"/>
        <connect fromImage="in" toNode="a" toInput="src"/>
        <connect fromNode="a" fromOutput="dst" toImage="out"/></graph>)";
}

struct Result {
    int code = 0;
    std::string out, err;

    // A failure says why, on standard error alone, and leaves the old picture.
    void expectFailure(int wanted, const Texts& messages) const {
        EXPECT_EQ(code, wanted);
        EXPECT_EQ(out, "");
        for (const std::string& message : messages)
            EXPECT_NE(err.find(message), std::string::npos) << message << "\nin: " << err;
        EXPECT_TRUE(readFile("old.png") == "old");
    }
};

// Each test works in a folder of its own.
class Pbhost : public testing::Test {
protected:
    Pbhost() {
        std::string pattern = (fs::temp_directory_path() / "pbhost_test.XXXXXX").string();
        EXPECT_NE(mkdtemp(pattern.data()), nullptr);
        fs::current_path(pattern);
        pbhost::writePicture("in.png", paint(Depth::Bits8));
        write("copy.pbk", copyText("sampleNearest"));
        write("broken.pbk", copyText("sampleNearst"));
        write("old.png", "old");
    }
    ~Pbhost() override {
        const fs::path folder = fs::current_path();
        fs::current_path("/");
        fs::remove_all(folder);
    }

    // The program, as a user starts it. Arguments and environment are text for the shell.
    static Result run(const std::string& arguments, const std::string& environment = "") {
        const int status = std::system(
            (environment + " '" PBHOST_PATH "' " + arguments + " </dev/null >out.txt 2>err.txt")
                .c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile("out.txt"),
                readFile("err.txt")};
    }

    // The verb alone: a start of the program takes longer than most renders.
    static Result render(const pbhost::RenderRequest& request) {
        Result result;
        testing::internal::CaptureStderr();
        try {
            pbhost::render(request);
        } catch (const pbhost::Failure& failure) {
            result = {static_cast<int>(failure.code), "", failure.what()};
        }
        result.err += testing::internal::GetCapturedStderr();
        return result;
    }

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

    const std::string examples = EXAMPLES_PATH "/";
};

} // namespace

TEST_F(Pbhost, TheProgramExplainsItsFailures) {
    const std::tuple<std::string, int, Texts> cases[] = {
        {"render broken.pbk -i in.png -o old.png", 3, {"Mine, vertex", "dst = sampleNearst(src"}},
        {"render copy.pbk -i missing.png -o old.png", 4, {"missing.png", "no such file"}},
        {"render copy.pbk -i in.png -o in.png/x.png", 1, {"in.png/x.png"}},
        {"render copy.pbk -o old.png --size 4x", 2, {"--size 4x", "WIDTHxHEIGHT"}},
        {"render copy.pbk -o old.png --size 99999x1", 1, {"larger than"}},
        {"translate copy.pbk --order 24", 2, {"--order", "24"}},
        {"", 2, {"render", "translate", "model"}},
    };
    for (const auto& [arguments, code, messages] : cases) {
        SCOPED_TRACE(arguments);
        run(arguments).expectFailure(code, messages);
    }
    run("render copy.pbk -o old.png", "__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent")
        .expectFailure(1, {"lacks an OpenGL context"});
}

TEST_F(Pbhost, NamesWhatCannotBeUsed) {
    write("pixel3.pbk", kernelText("output pixel3 dst; void evaluatePixel() {}"));
    write("empty.pbk", "");
    write("broken.pbg", graphText(copyText("sampleNearst")));
    write("set.pbk", setText);
    write("text.png", "no picture");
    const std::tuple<std::string, Texts, Texts, int, Texts> cases[] = {
        // the file, pictures and settings; exit code and messages
        {"missing.pbk", {}, {}, 3, {"missing.pbk", "No such file"}},
        {"in.txt", {}, {}, 3, {"in.txt", ".pbk"}},
        {"broken.pbg", {"in.png"}, {}, 3, {"broken.pbg", "  a, vertex", "sampleNearst(src"}},
        {"pixel3.pbk", {}, {}, 3, {"pixel3.pbk", "output must have four channels"}},
        {"empty.pbk", {}, {}, 3, {"empty.pbk", "no kernel was found"}},
        {"copy.pbk", {"text.png"}, {}, 4, {"text.png"}},
        {"copy.pbk", {"in.png", "in.png"}, {}, 2, {"takes 1 picture, 2 are given"}},
        {"set.pbk", {}, {"size=1"}, 2, {"size", "gain, count, isOn, tone, mode, at"}},
        {"set.pbk", {}, {"at=1"}, 2, {"at", "takes 2 values, 1 is given"}},
        {"set.pbk", {}, {"at=1,nan"}, 2, {"\"nan\" is not a number"}},
        {"set.pbk", {}, {"count=1.5"}, 2, {"\"1.5\" is not a whole number"}},
        {"set.pbk", {}, {"isOn=yes"}, 2, {"\"yes\" is neither true nor false"}},
        {"set.pbk", {}, {"isOn"}, 2, {"NAME=VALUE"}},
    };
    for (const auto& [file, pictures, settings, code, messages] : cases) {
        SCOPED_TRACE(file + testing::PrintToString(settings));
        render({file, pictures, "old.png", settings, {}, {}}).expectFailure(code, messages);
    }
}

TEST_F(Pbhost, RendersEveryExample) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(examples)) {
        const std::string file = entry.path().string();
        if (!file.ends_with(".pbk") && !file.ends_with(".pbg"))
            continue;
        SCOPED_TRACE(file);
        const json model = json::parse((pbhost::Command(), pbhost::modelAsJson(file)));
        const Texts pictures(model["inputs"].size(), "in.png");
        const Result result = render({file, pictures, "out.png", {}, {}, {}});
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(readPicture("out.png").height, pictures.empty() ? 360U : 6U);
        ++count;
    }
    EXPECT_GT(count, 10);
}

TEST_F(Pbhost, CopiesEveryValueAtEveryDepth) {
    write("half.pbg", graphText(copyText("sampleNearest")));
    const std::tuple<const char*, Depth, std::string, std::string> cases[] = {
        {"copy.pbk", Depth::Bits8, "8.png", ""},
        {"copy.pbk", Depth::Bits16, "16.png", ""},
        {"copy.pbk", Depth::Bits32, "32.exr", ""},
        {"half.pbg", Depth::Bits8, "half.png",
         "node \"b\": the graph has no kernel \"Lost\"\n!!!b vertex shader failed to compile\n"},
    };
    for (const auto& [file, depth, name, note] : cases) {
        pbhost::writePicture(name, paint(depth));
        const Result result = render({file, {name}, "to" + name, {}, {}, {}});
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.err.empty(), note.empty()) << result.err;
        EXPECT_NE(result.err.find(note), std::string::npos) << result.err;
        EXPECT_EQ(readPicture("to" + name).depth, depth);
        EXPECT_EQ(readPicture("to" + name).pixels, paint(depth).pixels) << name;
    }
}

// Through the program: its options, too, lead to the parameters.
TEST_F(Pbhost, SetsParametersOfEveryKind) {
    write("set.pbk", setText);
    const std::pair<const char*, std::array<float, 4>> cases[] = {
        // alpha, red, green, blue; the point lies in a picture of 4 by 4
        {"--set count=-7 --set at=0.5,+1 --set isOn=false --set mode=1", {1, 0.75F, -6, -1}},
        {"--set gain=1 --set gain=-1.5e1 --set isOn=1 --set tone=0.5,0.25,0.125",
         {0, -13, 4, 0.375F}},
    };
    for (const auto& [settings, argb] : cases) {
        const Result result = run("render set.pbk -o out.exr --depth 32 --size 4x4 "s + settings);
        SCOPED_TRACE(settings + result.err);
        ASSERT_EQ(result.code, 0);
        const Picture picture = readPicture("out.exr");
        ASSERT_EQ(picture.pixels.size(), 4U * 4 * 16);
        for (std::size_t at = 0; at < picture.pixels.size(); at += 16)
            EXPECT_EQ(std::memcmp(&picture.pixels[at], argb.data(), 16), 0) << at;
    }
}

TEST_F(Pbhost, ShowsTextsAndModels) {
    const pbhost::Command command;
    const std::string tint = examples + "tint.pbk", dissolve = examples + "dissolve.pbg";
    pbKernelInfo kernel;
    pbhost::readKernelFile(tint, kernel);
    EXPECT_EQ(run("translate '" + tint + "' --stage fragment --order 9").out,
              std::string(pbhost::kernelTexts(kernel, 9).fragment));
    EXPECT_NE(pbhost::translate({dissolve, "", "", 18}).find("scatter  ScatteredSwitch\n"),
              std::string::npos);
    EXPECT_EQ(
        json::parse(run("model '" + tint + "'").out)["parameters"][0]["defaultValue"]["value"],
        json::parse("[0.1, 0.06, 0.3]"));
    EXPECT_EQ(json::parse(pbhost::modelAsJson(dissolve))["connections"][2],
              json::parse(R"({"from": "scatter", "fromOutput": "dst", "to": "dst", "toInput": "",
                              "kind": "ToOutputImage"})"));
}
