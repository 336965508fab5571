// Checks that pbhost makes itself: of a graph's connections, of the rendered frame and of projects.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <tuple>

#include "hostkit/effect/frames.h"
#include "pbhost/commands/render_command.h"
#include "pbhost/diagnostics/frame_fill.h"
#include "pbhost/diagnostics/wiring.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/project_file.h"
#include "pixelbender/graph_reader.h"
#include "tests/modules/recording_resource.h"
#include "tests/support/running_command.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Pointwise;
using Texts = std::vector<std::string>;

namespace {

class Wiring : public RunningCommand {};

MATCHER(ContainsText, "") {
    return std::get<0>(arg).find(std::get<1>(arg)) != std::string::npos;
}

std::string kernelElement(const std::string& name, const Texts& inputs) {
    std::string text = "<kernel><![CDATA[kernel " + name + "<namespace:\"n\";version:1;>{";
    for (const std::string& input : inputs)
        text += "input image4 " + input + ";";
    return text + "output pixel4 dst; void evaluatePixel() {}}]]></kernel>";
}

// "a:Blur" is a node, "a>b.src" a connection, "a>" one to the output image.
std::string element(const std::string& word) {
    const std::size_t colon = word.find(':'), arrow = word.find('>'), dot = word.find('.');
    if (colon != std::string::npos)
        return "<node id='" + word.substr(0, colon) + "' name='" + word.substr(colon + 1) + "'/>";
    const std::string from = "<connect fromNode='" + word.substr(0, arrow) + "' fromOutput='dst' ";
    if (dot == std::string::npos)
        return from + "toImage='out'/>";
    return from + "toNode='" + word.substr(arrow + 1, dot - arrow - 1) + "' toInput='" +
           word.substr(dot + 1) + "'/>";
}

std::string failureOf(const auto& work) {
    try {
        work();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "none";
}

} // namespace

TEST_F(Wiring, FaultsNameNodeInputAndAlternatives) {
    const std::tuple<const char*, std::size_t, Texts> cases[] = {
        // graph, number of errors, messages (errors first)
        {"a:Blur b:Mix in>a.src a>b.src in>b.mask b>", 0, {}},
        {"a:Blr in>a.src a>",
         1,
         {R"(node "a": the graph has no kernel "Blr"; there are "Blur", "Mix")"}},
        {"a:Blur in>a.src in>b.src a>",
         0,
         {R"("src" of node "b" is ignored: there is no such node; there is "a")"}},
        {"a:Mix in>a.src in>a.maks in>a.mask in>in.src a>",
         0,
         {R"(is ignored: kernel "Mix" has no such input; there are "mask", "src")",
          R"("src" of node "in" is ignored: that is an input image; there is "a")"}},
        {"a:Blur inn>a.src a>",
         0,
         {R"(is ignored: its source is neither a node nor an input image; there are "in", "a")"}},
        {"a:Blur b:Blur in>a.src in>b.src b>a.src no> a>", 0, {}}, // a later connection replaces it
        {"a:Mix b:Blur in>a.mask in>b.src a>",
         0,
         {R"((kernel "Mix") is not connected and reads as transparent; to connect it there are "in", "b")"}},
        {"a:Blur in>a.src x>",
         1,
         {R"(connected to "x", which is neither a node nor an input image; there are "a", "in")"}},
        {"a:Blur b:Blur c:Mix d:Blur c>a.src a>b.src b>c.mask in>c.src c>d.src d>",
         1,
         {R"(these nodes form a cycle: "c" -> "a" -> "b" -> "c")"}},
        {"a:Blur b:Blur in>a.src b>b.src a>", 0, {R"(form a cycle: "b" -> "b")"}},
        // Two paths to one node are no cycle, and an image takes precedence over a node of its
        // name.
        {"a:Blur b:Mix in:Blur in>a.src a>b.src a>b.mask b>", 0, {R"("src" of node "in")"}},
    };
    for (const auto& [graphWords, errorCount, messages] : cases) {
        std::string text = "<graph name='G'><inputImage type='image4' name='in'/>" +
                           kernelElement("Blur", {"src"}) + kernelElement("Mix", {"src", "mask"});
        std::istringstream words(graphWords);
        for (std::string word; words >> word;)
            text += element(word);
        SCOPED_TRACE(text);
        pbGraphInfo graph;
        ASSERT_EQ(readGraphText(text + "</graph>", graph), 0);
        const auto [errors, warnings] = pbhost::checkWiring(graph);
        EXPECT_EQ(errors.size(), errorCount);
        Texts all;
        for (const auto* faults : {&errors, &warnings})
            for (const pbhost::WiringFault& fault : *faults)
                all.push_back(fault.text);
        EXPECT_THAT(all, Pointwise(ContainsText(), messages));
    }
}

TEST_F(Wiring, LimitsMessagesAndAllowsLongChains) {
    std::string text = "<graph name='G'>" + kernelElement("Blur", {"src"});
    constexpr int count = 20000; // nodes in one chain that ends in its start
    for (int i = 0; i < count; ++i)
        text += element(std::to_string(i) + ":Blur") +
                element(std::to_string((i + 1) % count) + ">" + std::to_string(i) + ".src") +
                element("x>" + std::to_string(i) + ".no");
    pbGraphInfo graph;
    ASSERT_EQ(readGraphText(text + "</graph>", graph), 0);
    // Connections in turn lead to an input that there is and to one that there is not.
    const auto warnings = pbhost::checkWiring(graph).warnings;
    EXPECT_EQ(warnings.size(), 21u);
    EXPECT_EQ(warnings.back().text, "and others");
    EXPECT_EQ(warnings[19].index, 39u);
    EXPECT_EQ(pbhost::namesLike("glow", {"a", "b", "c", "grow", "d", "e", "f", "glowing"}),
              "there are \"grow\", \"glowing\", \"a\", \"b\", \"c\", \"d\" and others");
    EXPECT_EQ(pbhost::namesLike("glow", {}), "there are none");
}

TEST(FrameFill, FindsEachUnwrittenRow) {
    for (const int componentBytes : {1, 2, 4}) {
        hostkit::World world = hostkit::makeOutput(5, 3, componentBytes);
        pbhost::fillUnwritten(world);
        EXPECT_EQ(pbhost::unwrittenRow(world), 0);
        const hostkit::World filled = world;
        std::memset(world.data.data(), 0, world.rowBytes);
        EXPECT_EQ(pbhost::unwrittenRow(world), 1);
        world.data[world.rowBytes + 5 * world.pixelBytes() - 1] ^= std::byte{1};
        EXPECT_EQ(pbhost::unwrittenRow(world), 2);
        // A row that was written, with the fill of another row.
        std::memcpy(&world.data[2 * world.rowBytes], filled.data.data(), world.rowBytes);
        EXPECT_EQ(pbhost::unwrittenRow(world), std::nullopt);
    }
}

// pbhost with a module that copies its input, unless the test changes it.
class FrameChecks : public testing::Test {
protected:
    FrameChecks() {
        fs::current_path(temporary_.path);
        fs::copy(RECORDING_MODULE, "module.so");
        std::ofstream("module.pipl", std::ios::binary) << recordingResource();
        std::ofstream("any.pbk") << "kernel K<namespace:\"n\";version:1;>{output pixel4 dst;}";
        std::ofstream("out.png") << "old";
    }

    ~FrameChecks() override { fs::current_path("/"); }

    // The error of a render, or "none".
    std::string render(const std::function<void(RecordingModule&, pbhost::Session&)>& change) {
        pbhost::SessionOptions options;
        options.module = fs::absolute("module.so");
        options.preferences = "preferences.json";
        pbhost::Session session(options);
        void* library = dlopen(options.module.c_str(), RTLD_NOW | RTLD_NOLOAD);
        auto& module =
            *reinterpret_cast<RecordingModule* (*)()>(dlsym(library, "recordingModule"))();
        change(module, session);
        const std::string failure = failureOf([&] {
            pbhost::RenderRequest request;
            request.files = {"any.pbk"};
            request.output = "out.png";
            request.size = "7x4";
            request.downsample = "2,1";
            const pbhost::RenderPlan plan(request);
            pbhost::renderPicture(session, plan, pbhost::readAhead(plan));
        });
        session.end();
        module = RecordingModule();
        dlclose(library);
        return failure;
    }

    const pbhost::TemporaryFolder temporary_;
};

TEST_F(FrameChecks, UnwrittenAndFailedFramesAreErrors) {
    EXPECT_THAT(render([](RecordingModule& module, auto&) { module.draws = false; }),
                HasSubstr("has not written its output: row 0"));
    // Writes an error log as the effect does, into the folder of the second answer.
    const auto failLate = [](RecordingModule& module, pbhost::Session& session) {
        module.handlers[PF_Cmd_ABOUT] = [&session](const Sent&) {
            std::ofstream(*session.host.scripts.answers.at(1) + "/Tvelmarondine_error_log.txt")
                << "OpenGL error 0x505";
        };
    };
    EXPECT_THAT(render(failLate), HasSubstr("the render failed: OpenGL error 0x505"));
    EXPECT_EQ(bytesOf("out.png"), "old");
    EXPECT_EQ(render([](auto&, auto&) {}), "none");
    EXPECT_EQ(pbhost::readPicture("out.png").width, 4u);
}

TEST(ProjectFiles, RefuseNumbersThatCannotBeStored) {
    const pbhost::TemporaryFolder temporary;
    const std::string file = temporary.path + "/p.json";
    const auto readWith = [&](const char* place, const nlohmann::json& value) {
        nlohmann::json project = {
            {"version", 1},
            {"depth", 8},
            {"time", 0},
            {"clock", {{"fps", 24}, {"first", -3}}},
            {"layer", {{"width", 4}, {"height", 3.0}}},
            {"effect", {{"data", ""}, {"controls", nlohmann::json::array()}}}};
        project[nlohmann::json::json_pointer(place)] = value;
        std::ofstream(file) << project.dump();
        const pbhost::ProjectFile read = pbhost::readProject(file);
        return std::tuple(read.width, read.height, read.clock->first);
    };
    EXPECT_EQ(readWith("/layer/width", 4294967295), std::tuple(4294967295U, 3U, -3));
    const std::tuple<const char*, nlohmann::json, const char*> cases[] = {
        {"/layer/height", 4e82, "4e+82 is not a valid whole number"},
        {"/layer/width", 4294967296, "4294967296 is not"},
        {"/layer/width", -1, "-1 is not"},
        {"/layer/width", 1.5, "1.5 is not"},
        {"/layer/width", "4", "of type string instead of number"},
        {"/depth", 4294967304, "4294967304 is not"}, // 8 in 32 bits
        {"/clock/first", 1e30, "1e+30 is not"},
    };
    for (const auto& [place, value, reason] : cases)
        EXPECT_THAT(failureOf([&, at = place, to = value] { readWith(at, to); }), HasSubstr(reason))
            << place;
}
