// The parts of the server of `pbhost live`: who may ask, saved files, pictures, the page's files.
#include <gtest/gtest.h>

#include <poll.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "pbhost/live/server/file_watch.h"
#include "pbhost/live/server/gate.h"
#include "pbhost/live/server/page_files.h"
#include "pbhost/live/server/page_requests.h"
#include "pbhost/live/server/workspace.h"
#include "pbhost/process/failure.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using namespace pbhost::live;

namespace {

void write(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

class InFolder : public testing::Test {
protected:
    InFolder() { fs::current_path(folder.path); }
    ~InFolder() override { fs::current_path("/"); }
    const TemporaryFolder folder;
};
using LiveWatch = InFolder;
using LiveWorkspace = InFolder;

} // namespace

TEST(LiveGate, LetsOnlyItsOwnPageIn) {
    const Gate local("0123abcd", "127.0.0.1"), open("0123abcd", "0.0.0.0");
    struct Case {
        RequestHead head;
        bool isAllowedLocally;
        bool isAllowedOpenly;
    };
    const std::string_view page = "/0123abcd/", socket = "/0123abcd/socket";
    const Case cases[] = {
        {{"GET", page, "127.0.0.1:8000", ""}, true, true},
        {{"GET", page, "localhost", ""}, true, true}, // a tunnel's port may differ
        {{"GET", page, "[::1]:9", ""}, true, true},
        {{"GET", page, "192.168.1.7:8000", ""}, false, true},
        {{"GET", page, "evil.example", ""}, false, false},
        {{"GET", page, "localhost.evil.example", ""}, false, false},
        {{"GET", page, "", ""}, false, false},
        {{"GET", "/0123abce/", "localhost", ""}, false, false},
        {{"GET", "/0123abcd", "localhost", ""}, false, false},
        {{"GET", "/0123abcdx/", "localhost", ""}, false, false},
        {{"GET", "/", "localhost", ""}, false, false},
        {{"GET", page, "localhost", "http://localhost"}, true, true},
        {{"GET", page, "localhost", "http://evil.example"}, false, false},
        {{"GET", socket, "localhost:1", "http://localhost:1", true}, true, true},
        {{"GET", socket, "localhost:1", "http://localhost:2", true}, false, false},
        {{"GET", socket, "localhost:1", "https://localhost:1", true}, false, false},
        {{"GET", socket, "localhost:1", "null", true}, false, false},
        {{"GET", socket, "localhost:1", "", true}, false, false},
        {{"POST", page, "localhost", ""}, false, false},
        {{"POST", page, "localhost", "http://localhost"}, true, true},
        {{"DELETE", page, "localhost", "http://localhost"}, false, false},
    };
    for (const Case& each : cases) {
        const std::string name = std::string(each.head.method) + " " +
                                 std::string(each.head.target) + " " + std::string(each.head.host) +
                                 " " + std::string(each.head.origin);
        EXPECT_EQ(!local.refusal(each.head), each.isAllowedLocally) << name;
        EXPECT_EQ(!open.refusal(each.head), each.isAllowedOpenly) << name;
    }
    EXPECT_EQ(local.pathOf("/0123abcd/pictures?name=a"), "pictures");
    const std::string token = makeToken();
    EXPECT_EQ(token.size(), 32U);
    EXPECT_NE(token, makeToken());
}

TEST_F(LiveWatch, SeesEveryWayToSave) {
    fs::create_directory("links");
    write("a.pbk", "1");
    fs::create_symlink(fs::absolute("a.pbk"), "links/b.pbk");
    FileWatch watch;
    const std::string file = fs::absolute("a.pbk"), link = fs::absolute("links/b.pbk");
    watch.add(file);
    watch.add(link);
    watch.add("no/folder/c.pbk");
    const std::vector<std::string> both = {file, link}, none;
    EXPECT_EQ(watch.takeChanged(), none);
    write("a.pbk", "2");
    pollfd ready = {watch.descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, 5000), 1);
    EXPECT_EQ(watch.takeChanged(), both);
    write("a.tmp", "3"); // another file
    EXPECT_EQ(watch.takeChanged(), none);
    fs::rename("a.tmp", "a.pbk");
    EXPECT_EQ(watch.takeChanged(), both);
    fs::remove("links/b.pbk");
    write("links/b.pbk", "4");
    EXPECT_EQ(watch.takeChanged(), std::vector{link});
}

TEST_F(LiveWorkspace, NumbersPicturesAndKeepsFilesApart) {
    write("a.png", "a");
    write("b.png", "b");
    LiveRequest request;
    request.inputs = {"a.png", "b.png", "a.png"};
    Workspace workspace(request);
    ASSERT_EQ(workspace.pictures().size(), 2U);
    Data asked = {{"picture", 1}, {"layers", {{"1", nullptr}, {"2", 0}}}};
    workspace.namePictures(asked);
    EXPECT_EQ(asked["picture"], fs::absolute("b.png").string());
    EXPECT_TRUE(asked["layers"]["1"].is_null());
    EXPECT_EQ(asked["layers"]["2"], fs::absolute("a.png").string());
    Data none = {{"picture", nullptr}};
    workspace.namePictures(none);
    EXPECT_EQ(none["picture"], "");
    Data unknown = {{"picture", 2}}, path = {{"picture", "/etc/passwd"}};
    EXPECT_THROW(workspace.namePictures(unknown), pbhost::Failure);
    EXPECT_ANY_THROW(workspace.namePictures(path));

    const std::size_t drop = workspace.addDrop("../../c d.png", "content");
    const std::string file = workspace.pictures()[drop]["file"];
    EXPECT_EQ(bytesOf(file), "content");
    EXPECT_EQ(fs::path(file).filename(), "c d.png");
    EXPECT_FALSE(fs::exists("../c d.png"));
    EXPECT_NE(workspace.addDrop("c d.png", "other"), drop);
    EXPECT_ANY_THROW(workspace.addDrop("..", "x"));
    EXPECT_ANY_THROW(workspace.addDrop("big", std::string(largestDrop + 1, 'x')));

    Data reply = {{"picture", file},
                  {"controls",
                   {{{"kind", "layer"}, {"value", fs::absolute("a.png").string()}},
                    {{"kind", "layer"}, {"value", nullptr}}}}};
    workspace.numberPictures(reply);
    EXPECT_EQ(reply["picture"], drop);
    EXPECT_EQ(reply["controls"][0]["value"], 0);
    EXPECT_TRUE(reply["controls"][1]["value"].is_null());

    const fs::path saved = workspace.newFile(".png");
    write(saved, "saved");
    EXPECT_EQ(workspace.takeFile("../" + saved.filename().string()), "");
    EXPECT_EQ(workspace.takeFile(saved.filename().string()), "saved");
    EXPECT_EQ(workspace.takeFile(saved.filename().string()), "");
    write(saved.parent_path() / "other.png", "not for a download");
    EXPECT_EQ(workspace.takeFile("other.png"), "");
    request.inputs = {"missing.png"};
    EXPECT_THROW(Workspace{request}, pbhost::Failure);
}

TEST_F(LiveWorkspace, CompletesRequestsWithWhatAPageCannotChoose) {
    write("a.png", "a");
    LiveRequest request;
    request.file = "k.pbk";
    request.inputs = {"a.png"};
    request.settings = {"gain=2"};
    request.depth = 16;
    request.size = {30, 20};
    Workspace workspace(request);
    PageRequests requests(workspace);
    const std::string kernel = fs::absolute("k.pbk"), other = "/etc/passwd";

    const Data first = requests.complete({{"do", "load"},
                                          {"isFirst", true},
                                          {"picture", 0},
                                          {"file", other},
                                          {"project", other},
                                          {"settings", {"gain=9"}}});
    EXPECT_EQ(first["file"], kernel);
    EXPECT_FALSE(first.contains("project"));
    EXPECT_EQ(first["settings"], Data({"gain=2"}));
    EXPECT_EQ(first["picture"], fs::absolute("a.png").string());
    EXPECT_EQ(first["depth"], 16);
    EXPECT_EQ(first["width"], 30);
    EXPECT_EQ(first["fps"], 24.0);
    const Data again = requests.complete({{"do", "load"}, {"picture", nullptr}, {"depth", 32}});
    EXPECT_FALSE(again.contains("settings"));
    EXPECT_EQ(requests.complete({{"do", "load"}, {"fps", 10}, {"first", 5}})["fps"], 10)
        << "of a project that the page has opened";
    EXPECT_EQ(again["depth"], 32);

    const Data save =
        requests.complete({{"do", "savePicture"}, {"extension", "exr"}, {"path", other}});
    EXPECT_TRUE(save["path"].get<std::string>().ends_with(".exr"));
    EXPECT_THROW(requests.complete({{"do", "savePicture"}, {"extension", "/../x"}}),
                 pbhost::Failure);
    const Data opened = requests.complete({{"do", "openProject"}, {"id", 7}, {"text", "{}"}});
    EXPECT_EQ(opened["do"], "load");
    EXPECT_EQ(opened["id"], 7);
    EXPECT_EQ(bytesOf(opened["project"].get<std::string>()), "{}");

    Data reply = {{"do", "savePicture"}, {"path", save["path"]}};
    requests.adapt(reply);
    EXPECT_FALSE(reply.contains("path"));
    EXPECT_EQ(reply["url"],
              "saved/" + fs::path(save["path"].get<std::string>()).filename().string());
    Data failed = {{"do", "failed"},
                   {"text", opened["project"].get<std::string>() + ": not a valid project"}};
    requests.adapt(failed);
    EXPECT_EQ(failed["text"], fs::path(opened["project"].get<std::string>()).filename().string() +
                                  ": not a valid project");
    Data loaded = {{"do", "load"}, {"file", fs::absolute("other.pbk").string()}};
    requests.adapt(loaded);
    write("other.pbk", "text");
    EXPECT_EQ(requests.source(), "text");
}

TEST(LivePage, IsInTheProgram) {
    for (const PageFile& file : pageFiles()) {
        EXPECT_EQ(file.content, bytesOf(fs::path(PAGE_PATH) / file.name)) << file.name;
        EXPECT_NE(mediaTypeOf(file.name), "application/octet-stream") << file.name;
    }
    const auto onDisk = std::distance(fs::directory_iterator(PAGE_PATH), {});
    EXPECT_EQ(pageFiles().size(), static_cast<std::size_t>(onDisk));
    EXPECT_NE(findPageFile("index.html"), nullptr);
    EXPECT_EQ(findPageFile("../server/gate.cpp"), nullptr);
}
