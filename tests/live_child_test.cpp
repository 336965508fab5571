// The render process of `pbhost live`: its requests, and what is left when it crashes.
#include <gtest/gtest.h>

#include <sys/types.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "pbhost/live/child/encoding.h"
#include "pbhost/live/child/message.h"
#include "pbhost/live/child/render_child.h"
#include "pbhost/live/child/work.h"
#include "pbhost/pictures/picture.h"
#include "pbhost/process/temporary_files.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using pbhost::Depth;
using pbhost::live::Data;
using pbhost::live::Message;

namespace {

std::string kernelText(const std::string& body) {
    return "<languageVersion : 1.0;>\nkernel Mine < namespace: \"n\"; version: 1; >\n{\n" + body +
           "\n}\n";
}

// Adds `shift` to red, multiplies green by `gain`, and takes blue and alpha from the input.
const std::string shiftText =
    kernelText("parameter float gain < minValue: 0.0; maxValue: 4.0; defaultValue: 1.0;"
               " description: \"Of green.\"; >;\n"
               "parameter float2 shift < minValue: float2(0.0); maxValue: float2(1.0);"
               " description: \"Of red.\"; >;\n"
               "parameter bool isOn < defaultValue: true; >;\n"
               "input image4 src; input image4 extra; output pixel4 dst;\n"
               "void evaluatePixel() {\n"
               "    float4 p = sampleNearest(src, outCoord());\n"
               "    float4 e = sampleNearest(extra, outCoord());\n"
               "    dst = isOn ? float4(p.r + shift.x, p.g * gain, p.b + e.b, p.a) : p;\n"
               "}");

void write(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
}

class LiveChild : public testing::Test {
protected:
    LiveChild() {
        fs::current_path(temporary_.path);
        setenv("XDG_CONFIG_HOME", temporary_.path.c_str(), 1);
        write("shift.pbk", shiftText);
        // Red and alpha differ in each pixel; green is 40, blue 10.
        pbhost::Picture picture = pbhost::makePicture(8, 4, Depth::Bits8);
        for (unsigned i = 0; i < 32; ++i) {
            const unsigned char pixel[] = {static_cast<unsigned char>(i < 16 ? 255 : i * 8),
                                           static_cast<unsigned char>(i * 2), 40, 10};
            std::memcpy(picture.pixels.data() + std::size_t{i} * 4, pixel, 4);
        }
        pbhost::writePicture("in.png", picture);
        start();
    }
    ~LiveChild() override { fs::current_path("/"); }

    void start() {
        child_.emplace([](int socket) { pbhost::live::answerRequests(socket, {}); });
    }

    Message ask(const Data& request) {
        Message reply;
        if (!pbhost::live::writeMessage(child_->socket(), {request, {}}) ||
            !pbhost::live::readMessage(child_->socket(), reply))
            reply.head = {{"do", "closed"}};
        return reply;
    }

    Data load(const std::string& file = "shift.pbk", const Data& more = {{"picture", "in.png"}}) {
        Data request = {{"do", "load"}, {"id", 1}, {"file", file}};
        request.update(more);
        return ask(request).head;
    }

    static Data gainOf(double gain) {
        return {{"do", "picture"},
                {"encoding", "raw"},
                {"channels", "color"},
                {"layers", {{"1", nullptr}}},
                {"controls", {{{"index", 44}, {"kind", "fixed slider"}, {"value", gain}}}}};
    }

    // Channels of a pixel: red, green, blue, 255.
    static std::vector<int> pixel(const Message& picture, unsigned number) {
        std::vector<int> channels;
        for (std::size_t k = 0; k < 4; ++k)
            channels.push_back(std::to_integer<int>(picture.body.at(number * 4 + k)));
        return channels;
    }

    const pbhost::TemporaryFolder temporary_;
    std::optional<pbhost::live::RenderChild> child_;
};

} // namespace

TEST_F(LiveChild, LoadsAndDescribesTheControls) {
    const Data loaded = load();
    ASSERT_EQ(loaded["do"], "load") << loaded.dump();
    EXPECT_EQ(loaded["id"], 1);
    EXPECT_EQ(loaded["about"]["name"], "Mine");
    EXPECT_EQ(loaded["width"], 8);
    EXPECT_EQ(loaded["depth"], 8);
    EXPECT_EQ(loaded["inputs"], 2);
    std::vector<std::string> names, descriptions;
    for (const Data& control : loaded["controls"]) {
        names.push_back(control["name"].get<std::string>() + " " +
                        control["kind"].get<std::string>());
        descriptions.push_back(control["description"]);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"extra layer", "isOn checkbox", "gain fixed slider",
                                               "shift[0] fixed slider", "shift[1] fixed slider"}));
    EXPECT_EQ(descriptions, (std::vector<std::string>{"", "", "Of green.", "Of red.", "Of red."}));
    EXPECT_EQ(loaded["controls"][2]["slider"], Data({0.0, 4.0}));
    EXPECT_EQ(loaded["controls"][2]["range"], Data({0.0, 4.0}));
    EXPECT_EQ(loaded["controls"][2]["default"], 1.0);
    // The default is the kernel's, also when the command line gives another value.
    const Data set = load("shift.pbk", {{"picture", "in.png"}, {"settings", {"gain=2.5"}}});
    EXPECT_EQ(set["controls"][2]["value"], 2.5);
    EXPECT_EQ(set["controls"][2]["default"], 1.0);
    const Data sized = load("shift.pbk", {{"width", 5}, {"height", 3}, {"depth", 32}});
    EXPECT_EQ(sized["width"], 5);
    EXPECT_EQ(sized["depth"], 32);
    EXPECT_TRUE(sized["picture"] == "");
}

TEST_F(LiveChild, RendersTheValuesInEveryEncoding) {
    ASSERT_EQ(load()["do"], "load");
    const Message plain = ask(gainOf(2));
    ASSERT_EQ(plain.head["do"], "picture") << plain.head.dump();
    EXPECT_EQ(plain.head["width"], 8);
    ASSERT_EQ(plain.body.size(), 8U * 4 * 4);
    EXPECT_EQ(pixel(plain, 5), (std::vector{10, 80, 10, 255}));
    EXPECT_EQ(pixel(ask(gainOf(0.5)), 31), (std::vector{62, 20, 10, 255}));

    // Another picture in the layer control, and a value at a time between two keyframes.
    Data request = gainOf(1);
    request["layers"] = {{"1", "in.png"}};
    request["seconds"] = 0.5;
    request["controls"][0]["keyframes"] = {{{"time", 0}, {"value", 1}},
                                           {{"time", 1}, {"value", 4}}};
    const Message animated = ask(request);
    EXPECT_EQ(pixel(animated, 5), (std::vector{10, 100, 20, 255}));
    EXPECT_EQ(animated.head["animated"]["44"], 2.5);

    // Alpha of pixel 20 is 160; the checkerboard's squares have 4 pixels.
    Data shown = gainOf(1);
    shown["channels"] = "alpha";
    EXPECT_EQ(pixel(ask(shown), 20), (std::vector{160, 160, 160, 255}));
    shown["channels"] = "composite";
    const auto over = [](int color) { return (color * 160 + 153 * 95 + 127) / 255; };
    EXPECT_EQ(pixel(ask(shown), 20), (std::vector{over(40), over(40), over(10), 255}));
    EXPECT_EQ(pixel(ask(shown), 5), (std::vector{10, 40, 10, 255}));
    shown["of"] = "input";
    shown["channels"] = "red";
    EXPECT_EQ(pixel(ask(shown), 5), (std::vector{10, 10, 10, 255}));

    Data png = gainOf(2);
    png["encoding"] = "png";
    const Message packed = ask(png);
    write("out.png", {reinterpret_cast<const char*>(packed.body.data()), packed.body.size()});
    const pbhost::Picture decoded = pbhost::readPicture("out.png");
    for (unsigned i = 0; i < 32; ++i)
        EXPECT_EQ(std::memcmp(decoded.pixels.data() + std::size_t{i} * 4 + 1,
                              plain.body.data() + std::size_t{i} * 4, 3),
                  0)
            << i;

    // The mean of the pixels 0, 1, 8 and 9, whose red is 0, 2, 16 and 18.
    Data small = gainOf(2);
    small["reduce"] = 2;
    const Message quarter = ask(small);
    EXPECT_EQ(quarter.head["width"], 4);
    EXPECT_EQ(quarter.body.size(), 4U * 2 * 4);
    EXPECT_EQ(pixel(quarter, 0), (std::vector{9, 80, 10, 255}));
    Data half = gainOf(2);
    half["downsample"] = 2;
    EXPECT_EQ(ask(half).head["width"], 4);
    const Data probe =
        ask({{"do", "pixel"}, {"x", 1}, {"y", 0}, {"inputX", 5}, {"inputY", 0}}).head;
    EXPECT_EQ(probe["input"], Data({10.0, 40.0, 10.0, 255.0}));
    EXPECT_EQ(probe["output"][1], 80.0);
}

TEST_F(LiveChild, ShowsTheFrameOfASequenceAtItsTime) {
    for (unsigned frame = 5; frame < 8; ++frame) {
        pbhost::Picture picture = pbhost::makePicture(2, 2, Depth::Bits8);
        for (std::byte& channel : picture.pixels)
            channel = static_cast<std::byte>(frame * 10);
        pbhost::writePicture("shot.000" + std::to_string(frame) + ".png", picture);
    }
    const Data clock = {{"picture", "shot.#.png"}, {"fps", 10.0}, {"first", 5}};
    ASSERT_EQ(load("shift.pbk", clock)["do"], "load");
    for (const auto& [seconds, frame] : {std::pair(0.0, 5), {0.2, 7}, {0.1, 6}, {0.14, 6}}) {
        Data request = gainOf(1);
        request["seconds"] = seconds;
        request["layers"] = {{"1", "shot.#.png"}};
        const int level = frame * 10;
        EXPECT_EQ(pixel(ask(request), 3), (std::vector{level, level, level * 2, 255})) << seconds;
    }
    Data late = gainOf(1);
    late["seconds"] = 9.0;
    EXPECT_EQ(ask(late).head["do"], "failed");
    EXPECT_EQ(ask(late).head["do"], "failed"); // not the last frame that could be read
    late["seconds"] = 0.2;
    EXPECT_EQ(pixel(ask(late), 3)[0], 70);
}

TEST_F(LiveChild, SavesTheFrameAndTheProject) {
    ASSERT_EQ(load("shift.pbk", {{"picture", "in.png"}, {"depth", 32}})["do"], "load");
    Data request = gainOf(3);
    request["do"] = "savePicture";
    request["path"] = "saved.exr";
    EXPECT_EQ(ask(request).head["path"], "saved.exr");
    const pbhost::Picture saved = pbhost::readPicture("saved.exr");
    EXPECT_EQ(saved.depth, Depth::Bits32);
    float green = 0;
    std::memcpy(&green, saved.pixels.data() + 8, sizeof green);
    EXPECT_FLOAT_EQ(green, 40 / 255.0F * 3);

    request["do"] = "saveProject";
    request["path"] = "saved.json";
    ASSERT_EQ(ask(request).head["path"], "saved.json");
    const Data opened = ask({{"do", "load"}, {"project", "saved.json"}, {"id", 7}}).head;
    ASSERT_EQ(opened["do"], "load") << opened.dump();
    EXPECT_EQ(opened["depth"], 32);
    EXPECT_EQ(opened["controls"][2]["value"], 3.0);
    EXPECT_EQ(opened["controls"][2]["default"], 1.0);
    EXPECT_EQ(opened["file"], fs::absolute("shift.pbk").string());

    request["path"] = "no/folder.png";
    request["do"] = "savePicture";
    EXPECT_EQ(ask(request).head["do"], "failed");
}

TEST_F(LiveChild, FailsWithTheLineAndGoesOn) {
    ASSERT_EQ(load()["do"], "load");
    ASSERT_EQ(ask(gainOf(1)).head["do"], "picture");
    std::string broken = shiftText;
    broken.replace(broken.find("p.g * gain"), 10, "p.g * gian");
    write("shift.pbk", broken);
    const Data failed = load();
    EXPECT_EQ(failed["do"], "failed");
    EXPECT_EQ(failed["what"], "load");
    ASSERT_FALSE(failed["places"].empty()) << failed.dump(2);
    EXPECT_EQ(failed["places"][0]["line"], 11);
    EXPECT_EQ(failed["places"][0]["column"],
              broken.find("gian") - broken.rfind('\n', broken.find("gian")));
    EXPECT_NE(failed["places"][0]["message"].get<std::string>().find("gian"), std::string::npos);
    EXPECT_EQ(ask(gainOf(1)).head["do"], "failed"); // nothing is loaded
    EXPECT_EQ(ask({{"do", "pixel"}, {"x", 5}, {"y", 0}}).head["output"][0], 10.0);

    // The same file is read again.
    std::string mended = shiftText;
    mended.replace(mended.find("p.g * gain"), 10, "0.5 * gain");
    write("shift.pbk", mended);
    ASSERT_EQ(load()["do"], "load");
    EXPECT_EQ(pixel(ask(gainOf(1)), 5)[1], 128);

    for (const auto& [request, message] : std::vector<std::pair<Data, std::string>>{
             {{{"do", "load"}, {"file", "missing.pbk"}}, "missing.pbk"},
             {{{"do", "load"}, {"file", "shift.pbk"}, {"picture", "missing.png"}}, "missing.png"},
             {{{"do", "load"}, {"project", "shift.pbk"}}, "not a valid project"},
             {{{"do", "load"}, {"file", "shift.pbk"}, {"depth", 1e30}}, "1e+30 is not"},
             {{{"do", "dance"}}, "unknown"},
             {Data::object(), "do"}}) {
        const Data reply = ask(request).head;
        EXPECT_EQ(reply["do"], "failed");
        EXPECT_NE(reply["text"].get<std::string>().find(message), std::string::npos) << reply;
    }
    ASSERT_EQ(load()["do"], "load");
    Data wrong = gainOf(9);
    EXPECT_NE(ask(wrong).head["text"].get<std::string>().find("out of range"), std::string::npos);
    wrong = gainOf(1);
    wrong["layers"] = {{"44", "in.png"}};
    EXPECT_EQ(ask(wrong).head["do"], "failed");
    EXPECT_EQ(ask(gainOf(1)).head["do"], "picture");
}

TEST_F(LiveChild, CrashesAlone) {
    ASSERT_EQ(load()["do"], "load");
    const pid_t first = child_->process();
    kill(first, SIGABRT); // sanitizers handle SIGSEGV
    EXPECT_EQ(ask(gainOf(1)).head["do"], "closed");
    EXPECT_EQ(child_->end(), "crashed (Aborted), most likely in the OpenGL driver");
    EXPECT_EQ(child_->end(), "");
    start();
    EXPECT_EQ(load()["do"], "load");
    const pid_t second = child_->process();
    child_.reset();
    EXPECT_NE(kill(second, 0), 0) << "the process was not ended";
}
