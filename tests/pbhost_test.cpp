// The program pbhost as a user runs it: output, messages, exit codes and files.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "pbhost/pictures/picture.h"
#include "pbhost/process/temporary_files.h"
#include "tests/support/program.h"

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace std::chrono_literals;
using nlohmann::json;
using pbhost::Depth;
using pbhost::Picture;
using pbhost::readPicture;
using Texts = std::vector<std::string>;

namespace {

std::string kernelText(const std::string& body) {
    return "<languageVersion : 1.0;>\nkernel Mine < namespace: \"n\"; version: 1; >\n{" + body +
           "}";
}
std::string copyText(const std::string& function) {
    return kernelText("input image4 src; output pixel4 dst;\nvoid evaluatePixel() {\ndst = " +
                      function + "(src, outCoord());\n}");
}

const std::string setText = kernelText(
    "parameter float gain < minValue: -2.0; maxValue: 2.0; defaultValue: 0.25; >;\n"
    "parameter float3 shift < defaultValue: float3(1.0, 2.0, 3.0); >;\n"
    "parameter int count < minValue: -10; maxValue: 10; defaultValue: 3; >;\n"
    "parameter bool isOn < defaultValue: true; >;\n"
    "parameter float4 tone < aeUIControl: \"aeColor\"; aeDisplayName: \"Tone\";\n"
    "    defaultValue: float4(0.2, 0.4, 0.6, 0.8); >;\n"
    "parameter int mode < aeUIControl: \"aePopup\"; aePopupString: \"soft|hard, edged\"; >;\n"
    "parameter float2 at < aeUIControl: \"aePoint\";\n"
    "    aePointRelativeDefaultValue: float2(0.5, 0.25); >;\n"
    "parameter float turn < aeUIControl: \"aeAngle\"; defaultValue: 30.0; >;\n"
    "output pixel4 dst;\nvoid evaluatePixel() {\n"
    "    dst = float4(gain + shift.x + 10.0 * shift.y + 100.0 * shift.z,\n"
    "                 float(count) + 16.0 * at.x + 256.0 * at.y,\n"
    "                 isOn ? tone.r + 2.0 * tone.g + 4.0 * tone.b + 8.0 * tone.a : -1.0,\n"
    "                 float(mode) * 512.0 + turn); }");

// The picture passes through node a; node b is unconnected and may lack its kernel.
std::string graphText(const std::string& kernel, const std::string& kernelOfB = "Mine") {
    return R"(<graph name="Pair"><inputImage type="image4" name="in"/>
        <outputImage type="pixel4" name="out"/><kernel><![CDATA[)" +
           kernel + R"(]]></kernel><node id="a" name="Mine"/><node id="b" name=")" + kernelOfB +
           R"("/>
        <connect fromImage="in" toNode="a" toInput="src"/>
        <connect fromNode="a" fromOutput="dst" toImage="out"/></graph>)";
}

// Different values in every channel of every pixel, including colours with alpha 0.
Picture paint(Depth depth) {
    Picture picture = pbhost::makePicture(9, 6, depth);
    const unsigned bytes = pbhost::componentBytesOf(depth);
    for (unsigned i = 0; i < 9 * 6 * 4; ++i) {
        const unsigned whole = i % 16 == 0 ? 0 : bytes == 1 ? i * 37 % 256 : i * 151;
        const float real = static_cast<float>(whole) / 9999.0F - 0.5F;
        std::memcpy(picture.pixels.data() + std::size_t{i} * bytes,
                    bytes == 4 ? static_cast<const void*>(&real) : &whole, bytes);
    }
    return picture;
}

class Pbhost : public ProgramTest {
protected:
    Pbhost() {
        pbhost::writePicture("in.png", paint(Depth::Bits8));
        write("copy.pbk", copyText("sampleNearest"));
        write("broken.pbk", copyText("sampleNearst"));
        write("set.pbk", setText);
    }

    const std::string examples = EXAMPLES_PATH "/";
};

// An endless render, in pbhost's two processes. `end` waits for both.
class LongRender {
public:
    LongRender() {
        write("slow.pbk",
              kernelText("output pixel4 dst; void evaluatePixel() { float sum = 0.0;\n"
                         "for (int i = 0; i < 100000; ++i) sum = sin(sum + outCoord().x);\n"
                         "dst = float4(sum); }"));
        if (parent = fork(); parent == 0) {
            dup2(open("err.txt", O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
            execl(PBHOST_PATH, "pbhost", "render", "slow.pbk", "--size", "4000x4000", "-o",
                  "old.png", nullptr);
            _exit(127);
        }
        const fs::path children =
            processFile(parent, "task/" + std::to_string(parent) + "/children");
        while ((child = std::atoi(bytesOf(children).c_str())) == 0 && kill(parent, 0) == 0)
            std::this_thread::sleep_for(10ms);
        // A file that the child would have created.
        write(".pbhost-" + std::to_string(child) + "-0.png", "a part");
    }
    int end(pid_t whom, int signal) const {
        kill(whom, signal);
        int status = 0;
        waitpid(parent, &status, 0);
        while (fs::exists(processFile(child, "stat")) &&
               bytesOf(processFile(child, "stat")).find(") Z ") == std::string::npos)
            std::this_thread::sleep_for(10ms);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    pid_t parent = 0, child = 0;

private:
    static fs::path processFile(pid_t process, const std::string& name) {
        return "/proc/" + std::to_string(process) + "/" + name;
    }
};

} // namespace

TEST_F(Pbhost, ExplainsItsFailures) {
    write("pixel3.pbk", kernelText("output pixel3 dst; void evaluatePixel() {}"));
    write("empty.pbk", "");
    write("broken.pbg", graphText(copyText("sampleNearst")));
    write("lost.pbg", graphText(copyText("sampleNearest"), "Lost"));
    write("loose.pbg", graphText(copyText("sampleNearest")));
    ASSERT_EQ(mkfifo("pipe.png", 0600), 0);
    fs::create_directory("folder.png");
    fs::create_symlink("nothing.png", "dangling.png");
    fs::create_symlink("/dev/stdout", "stdout.png");
    fs::create_symlink("/proc/self/mem", "mem.pbk");
    fs::create_symlink("/sys/devices/system/cpu/online", "short.pbk");
    write("old.json", R"({"version": 3})");
    write("half.json", R"({"version": 1, "depth": 8, "time": 0, "layer": {"width": 4, "height": 4},
                           "effect": {"data": "0", "controls": []}})");
    fs::copy("in.png", "\xff.png");
    fs::create_symlink("copy.pbk", "link.json");
    run("render set.pbk -o x.png --size 4x4 --save good.json").expectSuccess();
    const json good = json::parse(bytesOf("good.json"));
    for (const auto& [name, place, value] :
         {std::tuple("damaged.json", "/effect/data", json("0100")),
          std::tuple("late.json", "/time", json(1e9)),
          std::tuple("far.json", "/effect/controls/3/value", json(3.0))}) {
        json changed = good;
        changed[json::json_pointer(place)] = value;
        write(name, changed.dump());
    }
    const std::tuple<std::string, int, Texts> cases[] = {
        {"", 2, {"render", "controls", "prefs"}},
        {"render missing.pbk -o old.png", 3, {"missing.pbk", "No such file"}},
        {"render empty.pbk -o old.png", 3, {"empty.pbk", "no kernel was found"}},
        {"render pixel3.pbk -o old.png", 3, {"pixel3.pbk", "output must have four channels"}},
        {"render broken.pbk -i in.png -o old.png", 3, {"Mine, vertex", "dst = sampleNearst(src"}},
        {"render broken.pbk -o old.png --verbose", 3, {"Info: !!!Mine", "** vglsl **"}},
        {"render broken.pbg -i in.png -o old.png", 3, {"runs kernel \"Mine\"", "  a, vertex"}},
        {"render lost.pbg -o old.png", 3, {"node \"b\": the graph has no kernel \"Lost\""}},
        {"render loose.pbg -o old.png --strict", 3, {"warning: input \"src\""}},
        {"render short.pbk -o old.png", 3, {"short.pbk: cannot be read: only", "4096 bytes"}},
        {"render missing.pbk -o stdout.png", 1, {"stdout.png", "an open file of a process"}},
        {"render mem.pbk -o old.png", 3, {"mem.pbk", "Input/output error"}},
        {"render missing.pbk -o old.xyz", 1, {"no picture format", "'.xyz'"}},
        {"render missing.pbk -o .png", 1, {"no picture format", "extension ''"}},
        {"render missing.pbk -o pipe.png", 1, {"it is a pipe"}},
        {"render missing.pbk -o folder.png", 1, {"it is a folder"}},
        {"render missing.pbk -o dangling.png", 1, {"a link without a target"}},
        {"render missing.pbk -o /sys/x.png", 1, {"'/sys'"}}, // not writable
        {"render missing.pbk -o old.png --save /dev/null", 1, {"/dev/null", "a device"}},
        {"render copy.pbk -i missing.png -o old.png", 4, {"missing.png", "no such file"}},
        {"render copy.pbk -i in.png -o in.png/x.png", 1, {"in.png/x.png"}},
        {"render copy.pbk -i in.png -i in.png -o old.png", 2, {"takes 1 picture, 2 are given"}},
        {"render copy.pbk --layer 2=in.png -o old.png", 2, {"--layer 2", "there are:\n  none"}},
        {"render copy.pbk -o old.png --size 4x", 2, {"--size 4x", "WIDTHxHEIGHT"}},
        {"render copy.pbk -i in.png -o old.png --size 4x4", 2, {"--size cannot be combined"}},
        {"render copy.pbk -o old.png --size 99999x1", 2, {"larger than"}},
        {"render copy.pbk -o old.png --downsample 0", 2, {"--downsample 0", "1 to 64"}},
        {"render set.pbk -o old.png --set size=1", 2, {"no such", "gain: fixed slider from -2 to"}},
        {"render set.pbk -o old.png --set shift=1,2", 2, {"takes 3 values, 2 are given"}},
        {"render set.pbk -o old.png --set at=1,nan", 2, {"\"nan\" is not a number"}},
        {"render set.pbk -o old.png --set count=1.5", 2, {"\"1.5\" is not a whole number"}},
        {"render set.pbk -o old.png --set count=11", 2, {"out of range, -10 to 10"}},
        {"render set.pbk -o old.png --set tone=1,1,2", 2, {"\"2\" is out of range, 0 to 1"}},
        {"render set.pbk -o old.png --set mode=4", 2, {"no such choice", "popup 1 soft, 2 hard"}},
        {"render set.pbk -o old.png --set isOn=yes", 2, {"\"yes\" is neither true nor false"}},
        {"render --project in.png -o old.png", 2, {"in.png", "not a valid project"}},
        {"render --project old.json -o old.png", 2, {"old.json", "version 3 is unknown"}},
        {"render --project half.json -o old.png", 2, {"half.json", "odd number of digits"}},
        {"controls copy.pbk --module no.so", 2, {"no.so"}},
        {"prefs get rootFolder", 2, {"rootFolder"}},
        {"frobnicate", 2, {"unknown command 'frobnicate'", "--help"}},
        {"render in.png -o old.png",
         3,
         {"in.png", "neither that of a kernel (.pbk) nor of a graph"}},
        {"render \xff.pbk -o old.png", 3, {"the name is not UTF-8"}},
        {"render copy.pbk -o ''", 2, {"--output", "empty"}},
        {"render copy.pbk -o old.png --layer 1=", 2, {"--layer 1=", "CONTROL=PICTURE"}},
        {"render copy.pbk -o old.png --save ./old.png", 2, {"it is the output picture"}},
        {"render copy.pbk -o old.png --save link.json", 2, {"kernel or graph"}},
        {"render copy.pbk -o old.png -i in.png --save in.png", 2, {"it is an input picture"}},
        {"render copy.pbk -o old.png -i \xff.png --save p.json", 2, {"the name is not UTF-8"}},
        {"render --project . -o old.png", 2, {".: cannot be read: it is a folder"}},
        {"render --project damaged.json -o old.png", 2, {"the project is damaged"}},
        {"render --project late.json -o old.png", 2, {"late.json", "\"time\" is not a valid time"}},
        {"render --project far.json -o old.png", 2, {"far.json", "gain: 3.0 is out of range, -2"}},
        {"prefs --prefs .", 2, {".: cannot hold preferences: it is a folder"}},
        {"prefs set rootFolder ''", 2, {"a folder's path is needed"}},
        {"prefs set key \xff", 2, {"not UTF-8"}},
        {"camera --zoom 0", 2, {"--zoom"}},
        {"camera --position 0 0 inf", 2, {"--position"}},
    };
    for (const auto& [arguments, code, messages] : cases) {
        SCOPED_TRACE(arguments);
        run(arguments).expectFailure(code, messages);
        EXPECT_FALSE(hasTemporaries());
    }
    run("render copy.pbk -o old.png", "__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent")
        .expectFailure(1, {"OpenGL can not be used"});
}

TEST_F(Pbhost, RendersEveryExample) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(examples)) {
        const std::string file = entry.path().string();
        if (!file.ends_with(".pbk") && !file.ends_with(".pbg"))
            continue;
        SCOPED_TRACE(file);
        const std::size_t inputs = json::parse(run("model '" + file + "'").out)["inputs"].size();
        std::string arguments = "render '" + file + "' -o out.png";
        for (std::size_t i = 0; i < inputs; ++i)
            arguments += " -i in.png";
        const Result result = run(arguments);
        result.expectSuccess();
        EXPECT_EQ(result.out + result.err, "");
        EXPECT_EQ(readPicture("out.png").height, inputs == 0 ? 360U : 6U);
        ++count;
    }
    EXPECT_GT(count, 10);
}

TEST_F(Pbhost, CopiesEveryValueAtEveryDepth) {
    write("half.pbg", graphText(copyText("sampleNearest")));
    const std::tuple<std::string, Depth, std::string, std::string> cases[] = {
        {"copy.pbk", Depth::Bits8, "8.png", ""},
        {"copy.pbk", Depth::Bits16, "16.png", ""},
        {"copy.pbk", Depth::Bits32, "32.exr", ""},
        {"half.pbg", Depth::Bits8, "half.png",
         "pbhost: warning: half.pbg: input \"src\" of node \"b\""},
    };
    for (const auto& [file, depth, name, note] : cases) {
        pbhost::writePicture(name, paint(depth));
        const Result result = run("render " + file + " -i " + name + " -o to" + name);
        result.expectSuccess();
        EXPECT_EQ(result.err.empty(), note.empty()) << result.err;
        EXPECT_NE(result.err.find(note), std::string::npos) << result.err;
        EXPECT_EQ(readPicture("to" + name).depth, depth);
        EXPECT_EQ(readPicture("to" + name).pixels, paint(depth).pixels) << name;
    }
}

TEST_F(Pbhost, SetsControlsOfEveryKind) {
    const std::tuple<const char*, unsigned, std::array<float, 4>> cases[] = {
        // arguments, width of the result, alpha, red, green, blue
        {"", 4, {30, 321.25F, 3 + 32 + 256, 9.8F}},
        {"--set gain=-1.5e0 --set shift=4,5,6 --set count=-7", 4, {30, 652.5F, 281, 9.8F}},
        {"--set GAIN=1 --set 'shift[1]=0' --set at=0.5,+1", 4, {30, 302, 3 + 8 + 256, 9.8F}},
        {"--set isOn=false --set mode=2 --set turn=-90", 4, {422, 321.25F, 291, -1}},
        {"--set isOn=0 --set isOn=1 --set Tone=1,0.2,0.4", 4, {30, 321.25F, 291, 9.4F}},
        {"--set 'mode=Hard, edged' --set tone=0,0,0,1", 4, {542, 321.25F, 291, 8}},
        {"--downsample 2,1 --set at=2,3", 2, {30, 321.25F, 3 + 32 + 768, 9.8F}},
    };
    for (const auto& [arguments, width, argb] : cases) {
        const Result result = run("render set.pbk -o out.exr --depth 32 --size 4x4 "s + arguments);
        SCOPED_TRACE(arguments + result.err);
        ASSERT_EQ(result.code, 0);
        const Picture picture = readPicture("out.exr");
        ASSERT_EQ(picture.width, width);
        for (std::size_t at = 0; at < picture.pixels.size(); at += 4) {
            float channel = 0;
            std::memcpy(&channel, &picture.pixels[at], 4);
            EXPECT_NEAR(channel, argb[at / 4 % 4], 1e-3) << at;
        }
    }
}

// The kernel of a project is moved, and found by the preference or by an answer.
TEST_F(Pbhost, FindsTheKernelOfAProject) {
    const std::string blend = "new/blend.pbk";
    fs::create_directories("old");
    fs::copy(examples + "blend.pbk", "old/blend.pbk");
    run("render old/blend.pbk -i in.png --layer FRONT='" + examples +
        "pictures/second.png' -o first.png --set mode=Screen --set opacity=70 --save p.json")
        .expectSuccess();
    const std::string first = bytesOf("first.png");
    fs::rename("old", "new");
    run("render --project p.json -o old.png")
        .expectFailure(3, {"old/blend.pbk", "prefs set rootFolder", "--answer"});
    run("render --project p.json -o second.png --answer " + blend).expectSuccess();
    EXPECT_TRUE(bytesOf("second.png") == first);
    run("prefs set rootFolder .").expectSuccess();
    EXPECT_EQ(run("prefs").out, "Settings_cs_TVM_Launcher / rootFolder = " +
                                    (fs::current_path() / ".").string() + "\n");
    run("render --project p.json -o third.png --save p2.json").expectSuccess();
    EXPECT_TRUE(bytesOf("third.png") == first);
    run("prefs unset rootFolder").expectSuccess();
    EXPECT_EQ(run("prefs list").out, "");
    run("prefs --prefs mine.json set key value").expectSuccess();
    EXPECT_EQ(run("prefs --prefs mine.json get key").out, "value\n");
    EXPECT_EQ(run("prefs list").out, "");
    run("render --project p2.json -o fourth.png --set opacity=10").expectSuccess();
    EXPECT_FALSE(bytesOf("fourth.png") == first);
    EXPECT_FALSE(hasTemporaries());
}

TEST_F(Pbhost, WritesToTheTargetOfALink) {
    fs::create_directory("away");
    write("away/out.png", "old");
    fs::permissions("away/out.png", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("away/out.png", "link.png");
    run("render copy.pbk -i in.png -o link.png").expectSuccess();
    EXPECT_TRUE(fs::is_symlink("link.png"));
    EXPECT_EQ(readPicture("away/out.png").pixels, paint(Depth::Bits8).pixels);
    EXPECT_EQ(fs::status("away/out.png").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Pbhost, ShowsTheEffectsInformation) {
    EXPECT_EQ(run("info copy.pbk").out,
              "Pixel Bender Kernel : Mine\nversion : 1\nVendor : -\n\n\n");
    EXPECT_NE(run("about").out.find("OpenGL version : "), std::string::npos);
    EXPECT_NE(run("host").out.find("AEGP Stream Suite 9\n"), std::string::npos);
    for (const auto& [answers, code] :
         {std::pair("--export-log .", 0), std::pair("--answer yes --answer .", 3)}) {
        const Result result = run("info broken.pbk "s + answers);
        EXPECT_EQ(result.code, code);
        EXPECT_NE(result.out.find("Pixel Bender Kernel : Mine"), std::string::npos);
        EXPECT_NE(result.err.find("Mine vertex shader failed to compile"), std::string::npos);
        const std::string log = bytesOf("Tvelmarondine_error_log.txt");
        EXPECT_TRUE(log.starts_with("Win32bit\nvendor : ")) << log;
        EXPECT_NE(log.find("\nMine(v)\n"), std::string::npos) << log;
        EXPECT_NE(log.find("\n\nMine(f)\n"), std::string::npos) << log;
        fs::remove("Tvelmarondine_error_log.txt");
    }
    run("info broken.pbk --export-log /proc").expectFailure(1, {"/proc", "could not be written"});
    const json shown = json::parse(run("controls '" + examples + "tint.pbk' --json").out);
    EXPECT_EQ(shown["title"], "TVM:Tint");
    EXPECT_EQ(shown["controls"][0],
              json::parse(R"({"index": 44, "name": "Amount", "kind": "fixed slider",
                              "value": 85.0, "default": 85.0, "range": [0.0, 100.0],
                              "choices": null, "display": "percent", "hidden": false})"));
    EXPECT_EQ(shown["controls"].size(), 3U);
    EXPECT_EQ(json::parse(run("controls set.pbk --json --all").out)["controls"].size(), 123U);
}

TEST_F(Pbhost, SurvivesCrashesAndInterrupts) {
    const LongRender crashed, interrupted, orphaned;
    EXPECT_EQ(crashed.end(crashed.child, SIGABRT), 5);
    EXPECT_NE(bytesOf("err.txt").find("crashed (Aborted), most likely in the OpenGL driver over "
                                      "slow.pbk;"),
              std::string::npos);
    EXPECT_EQ(interrupted.end(interrupted.parent, SIGINT), 130);
    EXPECT_EQ(orphaned.end(orphaned.parent, SIGKILL), -SIGKILL);
    // No parent was left to remove it.
    fs::remove(".pbhost-" + std::to_string(orphaned.child) + "-0.png");
    EXPECT_FALSE(hasTemporaries());
    EXPECT_EQ(bytesOf("old.png"), "old");
}

TEST_F(Pbhost, ShowsTextsAndModels) {
    const std::string tint = "'" + examples + "tint.pbk'", dissolve = examples + "dissolve.pbg";
    // The program without its libraries: only pictures need one.
    fs::copy(PBHOST_PATH, "alone");
    EXPECT_EQ(run("--version", "", "./alone").out, "pbhost " PBHOST_VERSION "\n");
    run("model copy.pbk", "", "./alone").expectSuccess();
    run("render copy.pbk -o old.png --module '" TVM_MODULE_PATH "'", "", "./alone")
        .expectFailure(1, {"libpbhost_pictures.so: the picture library is missing"});
    const std::string text = run("translate " + tint + " --stage fragment --order 9").out;
    EXPECT_NE(text.find("parameter float3 shadows;"), std::string::npos) << text;
    EXPECT_NE(text.find("gl_FragColor = dst.gbar;"), std::string::npos) << text;
    EXPECT_NE(run("translate '" + dissolve + "'").out.find("scatter  ScatteredSwitch\n"),
              std::string::npos);
    EXPECT_EQ(json::parse(run("model " + tint).out)["parameters"][0]["defaultValue"]["value"],
              json::parse("[0.1, 0.06, 0.3]"));
    EXPECT_EQ(json::parse(run("model '" + dissolve + "'").out)["connections"][2],
              json::parse(R"({"from": "scatter", "fromOutput": "dst", "to": "dst", "toInput": "",
                              "kind": "ToOutputImage"})"));
}
