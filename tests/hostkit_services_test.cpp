#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/host.h"
#include "hostkit/suites/tables.h"
#include "tests/support/acquired_suites.h"

using namespace hostkit;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;
using Kind = Question::Kind;

class HostServices : public testing::Test {
protected:
    HostServices() { host.registeredPlugins = {"test"}; }
    ~HostServices() override {
        EXPECT_EQ(ledger::outstanding(), Texts());
        EXPECT_EQ(ledger::takeFaults(), Texts());
    }

    Host host;
};

// The value of the script, or "error: " and the reason.
std::string execute(const std::string& script, bool isLatin1 = false) {
    AEGP_MemHandle result = nullptr, error = nullptr;
    void* address = nullptr;
    const A_Err code = tables::utilitySuite().AEGP_ExecuteScript(1, script.c_str(),
                                                                 isLatin1 ? 1 : 0, &result, &error);
    EXPECT_TRUE((code == 0) == (result != nullptr) && (code == 0) == (error == nullptr)) << script;
    AEGP_MemHandle text = code == 0 ? result : error;
    if (tables::memorySuite().AEGP_LockMemHandle(text, &address) != 0)
        return "no text";
    const std::string copy =
        (code == 0 ? "" : "error: ") + std::string(static_cast<char*>(address));
    tables::memorySuite().AEGP_FreeMemHandle(text);
    return copy;
}

} // namespace

TEST_F(HostServices, ScriptsReturnTheirLastValueOrTheirError) {
    const AcquiredSuites acquired;
    const std::pair<std::string, std::string> cases[] = {
        {"null", "null"},
        {"'\\u00e9\\uD83D\\uDE00' + '\u00e9\U0001F600'", "\u00e9\U0001F600\u00e9\U0001F600"},
        {"'half \\uD83D'", "half \uFFFD"},
        {"'bad \xFF byte'", "bad \uFFFD byte"},
        {"'a\\0b'", "a"},
        {"new File('/a').fsName + Folder('/b').fsName", "/a/b"},
        {"kept = 1", "1"}, // globals do not survive a run
        {"kept", "error: ReferenceError: identifier 'kept' undefined"},
        {"throw new Error('\U0001F600')", "error: Error: \U0001F600"},
        {"function again() { again(); } again();", "error: RangeError: callstack limit"},
    };
    for (const auto& [script, expected] : cases)
        EXPECT_EQ(execute(script), expected) << script;
    EXPECT_TRUE(execute("confirm(\"cut off);").starts_with("error: SyntaxError"));
    EXPECT_EQ(execute("'\xE9'", true), "\u00e9");
    EXPECT_NE(tables::utilitySuite().AEGP_ExecuteScript(1, "(", 0, nullptr, nullptr), 0);
}

TEST_F(HostServices, DialogsAreAnswered) {
    const AcquiredSuites acquired;
    host.scripts.answers = {"yes", std::nullopt};
    EXPECT_EQ(execute("confirm('C:\\\\x \u00e9\U0001F600',true,'T\\?')"), "true");
    EXPECT_EQ(execute("confirm('',false,'')"), "false");
    host.scripts.askUser = [](const Question& question) -> std::optional<std::string> {
        if (question.kind == Kind::Alert)
            throw std::runtime_error("hung up");
        return question.message;
    };
    EXPECT_EQ(execute("File.openDialog('Pick', 'k:*.pbk;').fsName"), "Pick");
    EXPECT_EQ(execute("alert('?')"), "error: Error: hung up");
    const std::vector<Question>& asked = host.scripts.asked();
    ASSERT_EQ(asked.size(), 3U);
    EXPECT_TRUE(asked[0].kind == Kind::Confirm && asked[0].flag && !asked[1].flag);
    EXPECT_EQ(asked[0].message + asked[0].title + asked[2].filter,
              "C:\\x \u00e9\U0001F600T?k:*.pbk;");
}

TEST_F(HostServices, PreferencesAreStoredAndInvalidOnesRejected) {
    const AcquiredSuites acquired;
    const fs::path file = fs::path(testing::TempDir()) / "hostkit_preferences.json";
    fs::remove(file);
    Preferences(file).set("B", "root", "/k/\u00e9");
    host.preferences = Preferences(file);
    const AEGP_PersistentDataSuite1& suite = tables::persistentDataSuite();
    AEGP_PersistentBlobH blob = nullptr;
    ASSERT_EQ(suite.AEGP_GetApplicationBlob(&blob), 0);
    EXPECT_EQ(host.preferences.get("B", "root"), "/k/\u00e9");
    EXPECT_EQ(suite.AEGP_SetString(blob, "B", "root", "new"), 0);
    EXPECT_EQ(Preferences(file).get("B", "root"), "new");
    EXPECT_NE(suite.AEGP_SetString(blob, "B", "root", "\xFF"), 0);
    EXPECT_EQ(host.preferences.get("B", "root"), "new") << "what is not saved is not set";
    EXPECT_EQ(host.infoPanel.messages().size(), 1U);

    for (const char* broken : {"", "{\"A\": ", "[]", "{\"A\": 1}", "{\"A\": {\"n\": 1}}"}) {
        std::ofstream(file) << broken;
        try {
            const Preferences preferences(file);
            ADD_FAILURE() << broken;
        } catch (const std::runtime_error& error) {
            EXPECT_TRUE(
                std::string(error.what()).starts_with(file.string() + ": not a preferences file"));
        }
    }
    EXPECT_THROW(Preferences(file.parent_path()), std::runtime_error);
    EXPECT_FALSE(fs::exists(file.string() + ".new"));
    fs::remove(file);
}

TEST_F(HostServices, MisusedMemoryHandlesAreFaults) {
    const AcquiredSuites acquired;
    const AEGP_MemorySuite1& suite = tables::memorySuite();
    AEGP_MemHandle memory = nullptr;
    void* address = nullptr;
    ASSERT_EQ(suite.AEGP_NewMemHandle(1, "m", 3, AEGP_MemFlag_NONE, &memory), 0);
    EXPECT_NE(suite.AEGP_UnlockMemHandle(memory), 0);
    EXPECT_EQ(suite.AEGP_LockMemHandle(memory, &address), 0);
    EXPECT_NE(suite.AEGP_ResizeMemHandle("m", 9, memory), 0);
    EXPECT_EQ(suite.AEGP_UnlockMemHandle(memory) + suite.AEGP_ResizeMemHandle("m", 9, memory), 0);
    EXPECT_EQ(suite.AEGP_LockMemHandle(memory, &address) + suite.AEGP_FreeMemHandle(memory), 0);
    EXPECT_NE(suite.AEGP_FreeMemHandle(memory), 0);
    EXPECT_NE(suite.AEGP_LockMemHandle(memory, &address), 0);
    EXPECT_NE(suite.AEGP_UnlockMemHandle(nullptr), 0);
    EXPECT_EQ(ledger::takeFaults(),
              (Texts{"AEGP_UnlockMemHandle: a handle that is not locked",
                     "AEGP_ResizeMemHandle: a handle that is locked",
                     "AEGP_FreeMemHandle: memory handle \"m\" was already released",
                     "AEGP_LockMemHandle: memory handle \"m\" was already released",
                     "AEGP_UnlockMemHandle: a memory handle that was never acquired"}));
}

TEST_F(HostServices, UnlockedMemoryMoves) {
    const AcquiredSuites acquired;
    const PF_UtilCallbacks& utils = *host.inData()->utils;
    const AEGP_MemorySuite1& suite = tables::memorySuite();
    PF_Handle handle = utils.host_new_handle(2);
    AEGP_MemHandle memory = nullptr;
    ASSERT_EQ(suite.AEGP_NewMemHandle(1, "m", 2, AEGP_MemFlag_CLEAR, &memory), 0);
    const void* first[] = {utils.host_lock_handle(handle), nullptr};
    static_cast<char*>(*handle)[1] = 'x';
    void* address = nullptr;
    for (int round = 0; round < 3; ++round) {
        utils.host_unlock_handle(handle);
        EXPECT_EQ(suite.AEGP_LockMemHandle(memory, &address), 0);
        EXPECT_EQ(*static_cast<char*>(address), 0);
        EXPECT_NE(address, std::exchange(first[1], address));
        EXPECT_EQ(suite.AEGP_UnlockMemHandle(memory), 0);
        const void* now = utils.host_lock_handle(handle);
        EXPECT_EQ(utils.host_get_handle_size(handle), 2U);
        EXPECT_EQ(now, *handle);
        EXPECT_NE(now, std::exchange(first[0], now));
        EXPECT_EQ(static_cast<const char*>(now)[1], 'x');
    }
    utils.host_dispose_handle(handle);
    EXPECT_EQ(suite.AEGP_FreeMemHandle(memory), 0);
}

TEST_F(HostServices, SuitesAreReleasedOnlyOnce) {
    const auto& [acquire, release] = *host.inData()->pica_basicP;
    const void* table = nullptr;
    EXPECT_NE(acquire("AEGP Stream Suite", 8, &table), 0);
    EXPECT_EQ(acquire("AEGP Stream Suite", 9, &table), 0);
    EXPECT_NE(release("AEGP Stream Suite", 8), 0);
    EXPECT_EQ(ledger::outstanding(), Texts{"suite \"AEGP Stream Suite 9\""});
    EXPECT_TRUE(release("AEGP Stream Suite", 9) == 0 && release("AEGP Stream Suite", 9) != 0);
    EXPECT_EQ(ledger::takeFaults(), (Texts{"ReleaseSuite: AEGP Stream Suite 8 is not acquired",
                                           "ReleaseSuite: AEGP Stream Suite 9 is not acquired"}));
    EXPECT_THROW(Host(), std::logic_error) << "one at a time";
}

TEST_F(HostServices, AnyCallCanFailOrBeInterrupted) {
    const AcquiredSuites acquired;
    const AEGP_UtilitySuite11& suite = tables::utilitySuite();
    AEGP_PluginID id = 0;
    calls::reset();
    calls::failAt(2);
    EXPECT_EQ(suite.AEGP_RegisterWithAEGP(nullptr, "one", &id), 0);
    EXPECT_EQ(host.inData()->utils->host_new_handle(1), nullptr);
    EXPECT_EQ(calls::failedCall(), "host_new_handle");
    calls::failAt("AEGP_RegisterWithAEGP", 2, 9);
    calls::onNext("AEGP_RegisterWithAEGP", [&] { // its inner call is the second of that name
        EXPECT_EQ(suite.AEGP_RegisterWithAEGP(nullptr, "inner", &id), 9);
    });
    EXPECT_EQ(suite.AEGP_RegisterWithAEGP(nullptr, "two", &id), 0);
    EXPECT_EQ(host.registeredPlugins, (Texts{"test", "one", "two"}));
    EXPECT_TRUE(id == 3 && calls::count() == 4);
    EXPECT_NE(suite.AEGP_EndUndoGroup(), 0);
    EXPECT_EQ(ledger::takeFaults().size(), 1U);
}
