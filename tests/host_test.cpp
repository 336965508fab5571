#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "host/host_services.h"
#include "host/info_print.h"
#include "host/param_checkout.h"
#include "host/persistent_data.h"
#include "host/script_bridge.h"
#include "hostkit/calls.h"
#include "hostkit/ledger.h"
#include "hostkit/memory_handles.h"
#include "hostkit/suite_tables.h"
#include "hostkit/suites.h"
#include "tests/support/running_command.h"

namespace calls = hostkit::calls;
namespace suites = hostkit::suites;

namespace {

constexpr A_long pluginId = 7;

class HostServices : public RunningCommand {
protected:
    HostServices() { currentPluginId = pluginId; }

    SPBasicSuite* basic = host.inData()->pica_basicP;
};

// Records what reaches the script suite, and answers with prepared texts.
struct Script {
    static inline std::string heard;
    static inline const char* answer = nullptr;
    static inline const char* complaint = nullptr;
    static inline A_Err err = 0;

    static A_Err run(AEGP_PluginID plugin, const char* script, A_Boolean isPlatformEncoding,
                     AEGP_MemHandle* result, AEGP_MemHandle* error) {
        EXPECT_TRUE(plugin == pluginId && isPlatformEncoding == 0);
        EXPECT_TRUE(result == nullptr || *result == nullptr);
        EXPECT_TRUE(error == nullptr || *error == nullptr);
        heard = script;
        if (result != nullptr && answer != nullptr)
            *result = hostkit::lendText(std::string_view(answer));
        if (error != nullptr && complaint != nullptr)
            *error = hostkit::lendText(std::string_view(complaint));
        return err;
    }
};

} // namespace

TEST_F(HostServices, OneParameterIsLentAtATime) {
    static std::string heard;
    static A_long refused;
    heard.clear();
    refused = -1;
    PF_InData inData = *host.inData();
    inData.time_scale = 25;
    inData.inter.checkout_param = [](PF_ProgPtr, A_long index, A_long time, A_long, A_u_long scale,
                                     PF_ParamDef* param) -> PF_Err {
        heard += "out " + std::to_string(index) + " at " + std::to_string(time) + "/" +
                 std::to_string(scale) + ";";
        param->uu.id = index + 1;
        return index == refused ? 9 : 0;
    };
    inData.inter.checkin_param = [](PF_ProgPtr, PF_ParamDef* param) -> PF_Err {
        heard += "in " + std::to_string(param->uu.id - 1) + ";";
        return 0;
    };
    {
        ParamCheckout checkout(&inData);
        EXPECT_EQ(checkout.read(0).uu.id + checkout.read(0).uu.id, 2);
        EXPECT_EQ(checkout.read(3).uu.id, 4);
        inData.current_time = 5;
        EXPECT_EQ(checkout.read(3).uu.id, 4);
        refused = 2;
        EXPECT_EQ(checkout.read(2).uu.id + checkout.read(2).uu.id, 0);
        EXPECT_EQ(checkout.err(), 9);
        EXPECT_EQ(checkout.read(1).uu.id, 2);
    }
    EXPECT_EQ(heard, "out 0 at 0/25;in 0;out 3 at 0/25;in 3;out 3 at 5/25;in 3;out 2 at 5/25;"
                     "out 1 at 5/25;in 1;");
}

TEST_F(HostServices, ScriptsAreWrittenByteForByte) {
    AEGP_UtilitySuite11 utilities = hostkit::tables::utilitySuite();
    utilities.AEGP_ExecuteScript = Script::run;
    suites::offer(utilities.name, utilities.version, &utilities);
    alertBox(basic, "a\\n\n\"b'?\a\b\f\r\t\v\xc3\xa9", "T", true);
    EXPECT_EQ(Script::heard, R"(alert("a\\n\n\"b\'\?\b\f\r\t\v)"
                             "\xc3\xa9\",\"T\",true);");

    using Answers = std::array<const char*, 2>; // result and error
    const std::tuple<Answers, A_Err, bool> confirmations[] = {
        {{"true", nullptr}, 0, true},   {{"true", "a warning"}, 0, true},
        {{"true ", nullptr}, 0, false}, {{"false", nullptr}, 0, false},
        {{nullptr, "no"}, 8, false},    {{nullptr, nullptr}, 8, false}};
    for (const auto& [answers, err, isYes] : confirmations) {
        std::tie(Script::answer, Script::complaint, Script::err) =
            std::tuple(answers[0], answers[1], err);
        EXPECT_EQ(confirmBox(basic, "T'", "M?", false), isYes);
    }
    EXPECT_EQ(Script::heard, R"(confirm("M\?",false,"T\'");)");

    const std::tuple<const char*, bool, bool> choices[] = {// a file, a folder
                                                           {nullptr, false, false},
                                                           {"", false, false},
                                                           {"null", true, false},
                                                           {"/a/b", true, true}};
    for (const auto& [answer, isFile, isFolder] : choices) {
        Script::answer = answer;
        NarrowString path = "old";
        EXPECT_EQ(openFileDialog(basic, "?", "x:*.\"y", path), isFile);
        EXPECT_EQ(Script::heard,
                  "function main(){var file = File.openDialog(\"\\?\",\"x:*.\"y\");if(file != "
                  "null){return file.fsName;}else{return \"\";}}main();");
        EXPECT_EQ(selectFolderDialog(basic, "", path), isFolder);
        EXPECT_EQ(path, answer == nullptr ? "" : answer);
        EXPECT_EQ(Script::heard,
                  "function main(){var folder = Folder.selectDialog(\"\"); if(folder "
                  "!= null){return folder.fsName;}else{return \"\";}}main();");
    }
    EXPECT_EQ(hostkit::ledger::outstanding(), std::vector<std::string>());
    suites::refuse(utilities.name, utilities.version);
    EXPECT_FALSE(confirmBox(basic, "T", "M", true));
    EXPECT_EQ(runScript(basic, "1", false, nullptr, nullptr), 1);
}

TEST_F(HostServices, MessagesAreCutIntoThreeLines) {
    using Lines = hostkit::InfoPanel::Lines;
    const std::string longest(1023, 'x');
    const std::pair<std::string, Lines> cases[] = {{"one", {"one"}},
                                                   {"a\n", {"a", ""}},
                                                   {"a\nb", {"a", "b"}},
                                                   {"a\nb\n", {"a", "b", ""}},
                                                   {"a\nb\nc\nd", {"a", "b", "c\nd"}},
                                                   {"", {""}},
                                                   {"\n\nc", {"", "", "c"}},
                                                   {std::string(5000, 'x'), {longest}}};
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

TEST_F(HostServices, PreferencesAreReadInTheirWholeLength) {
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
    EXPECT_EQ(std::tuple(data.numSections(), data.numKeys("section"),
                         data.doesKeyExist("section", "number"), data.doesKeyExist("x", "number"),
                         data.getLong("section", "number", 5), data.getLong("section", "none", 5)),
              std::tuple(1, 5, true, false, -12, 5));
    EXPECT_EQ(data.sectionKey(0) + data.valueKey("section", 0), "sectionempty");
    calls::failAt("AEGP_GetString", 1);
    EXPECT_EQ(data.getString("section", "three"), "");
    const std::uint64_t before = calls::count();
    EXPECT_EQ(data.getString("section", "three"), "");
    EXPECT_EQ(calls::count(), before);
}
