#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "host/host_services.h"
#include "host/info_print.h"
#include "host/persistent_data.h"
#include "host/script_bridge.h"
#include "hostkit/calls/calls.h"
#include "hostkit/suites/basic_suite.h"
#include "tests/support/running_command.h"

namespace calls = hostkit::calls;
namespace suites = hostkit::suites;

namespace {

class HostServices : public RunningCommand {
protected:
    HostServices() { currentPluginId = 7; }

    SPBasicSuite* basic = host.inData()->pica_basicP;
};

} // namespace

TEST_F(HostServices, DialogsShowTheirTextsUnchanged) {
    const char* message = "\\ 'a' \"b\"\n\t\b\f\r\v? \\n \xe2\x82\xac \xf0\x9f\x98\x80";
    alertBox(basic, message, message, false);
    host.scripts.answers = {"yes", std::nullopt, std::nullopt, std::nullopt, "/a/b"};
    EXPECT_TRUE(confirmBox(basic, message, message, true));
    EXPECT_FALSE(confirmBox(basic, "title", message, false));
    NarrowString path = "old";
    EXPECT_FALSE(openFileDialog(basic, message, "pbk:*.pbk;", path));
    EXPECT_EQ(path, "");
    EXPECT_FALSE(selectFolderDialog(basic, message, path));
    EXPECT_TRUE(selectFolderDialog(basic, message, path));
    EXPECT_EQ(path, "/a/b");
    ASSERT_EQ(host.scripts.asked().size(), 6U);
    for (const hostkit::Question& question : host.scripts.asked())
        EXPECT_EQ(question.message, message);
    EXPECT_EQ(host.scripts.asked()[1].title, message);
    suites::refuse("AEGP Utility Suite", 11);
    EXPECT_FALSE(confirmBox(basic, "T", "M", true));
    EXPECT_EQ(runScript(basic, "1", false, nullptr, nullptr), 1);
}

TEST_F(HostServices, MessagesAreCutIntoThreeLines) {
    using Lines = hostkit::InfoPanel::Lines;
    const std::string longest(1023, 'x');
    const std::pair<std::string, Lines> cases[] = {
        {"a\n", {"a", ""}}, {"a\nb\n", {"a", "b", ""}}, {"a\nb\nc\nd", {"a", "b", "c\nd"}},
        {"one", {"one"}},   {"\n\nc", {"", "", "c"}},   {std::string(5000, 'x'), {longest}}};
    for (const auto& [text, lines] : cases) {
        EXPECT_EQ(dprintf(basic, "%s", text.c_str()), 0);
        EXPECT_EQ(host.infoPanel.messages().back(), lines) << text;
    }
    const auto print = [&](const std::string& format, auto... arguments) {
        dprintf(basic, format.c_str(), arguments...);
        return host.infoPanel.messages().back();
    };
    EXPECT_EQ(print(longest, 1), (Lines{longest}));
    EXPECT_EQ(print(longest + "x", 1), (Lines{"dprintf error ;Message too large", ""}));
    EXPECT_EQ(dprintf(nullptr, "%d", 1), 516);
}

TEST_F(HostServices, PreferencesOfAnyLengthAreRead) {
    const std::string longText(5000, 'y');
    const std::map<std::string, std::string> values = {
        {"empty", ""}, {"three", "abc"}, {"four", "abcd"}, {"long", longText}};
    for (const auto& [key, value] : values)
        host.preferences.set("section", key, value);
    AEO::PersistentData data(basic);
    EXPECT_EQ(data.getString("section", "missing"), "");
    for (const auto& [key, value] : values)
        EXPECT_EQ(data.getString("section", key.c_str()),
                  NarrowString(value.c_str(), value.size() + 1));
    data.setString("section", "number", "-12");
    EXPECT_EQ(data.getLong("section", "number", 5) + data.getLong("section", "none", 5), -7);
    EXPECT_TRUE(data.doesKeyExist("section", "number") && !data.doesKeyExist("x", "number"));
    calls::failAt("AEGP_GetString", 1);
    EXPECT_EQ(data.getString("section", "three"), "");
    const std::uint64_t before = calls::count();
    EXPECT_EQ(data.getString("section", "three"), "");
    EXPECT_EQ(calls::count(), before);
}
