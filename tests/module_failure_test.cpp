// Whatever fails on the host's side, a suite, a call, the memory: the command ends in order, and
// the effect lives on.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <vector>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/services/memory.h"
#include "hostkit/suites/basic_suite.h"
#include "tests/support/host_context.h"
#include "tests/support/module_fixture.h"

using namespace hostkit;
using testing::AnyOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr std::array nullHandles = {"never acquired", "a handle of no ", ": no item",
                                    "a marker of which no value"};

// The calls and the suites without which something cannot go back, and what that is.
const std::map<std::string, std::string> releases = {
    {"ReleaseSuite", "suite"},
    {"AEGP_DisposeStream", "stream "},
    {"AEGP_DisposeEffect", "effect"},
    {"AEGP_DisposeStreamValue", "stream value"},
    {"AEGP_FreeMemHandle", "memory handle"},
    {"AEGP_EndUndoGroup", "undo group"},
    {"checkin_param", "parameter"},
    // A text that cannot be read is in doubt, and stays with the host.
    {"AEGP_LockMemHandle", "memory handle"},
    {"AEGP_GetMemHandleSize", "memory handle"},
    {"AcquireSuite", ""}, // that of the call which would give something back
    {"AEGP Memory Suite", "memory handle"},
    {"AEGP Effect Suite", "effect"},
};

// One command, and what it takes to send it once more.
struct Step {
    const char* name;
    std::function<void()> prepare;
    std::function<PF_Err()> command;
};

// One instance's life as the host leads it, with everything that a command can do in it.
class Life : public ModuleTest {
protected:
    Life() : effect(addEffect(layer)) {
        host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", "/nowhere");
    }

    std::vector<Step> steps();
    // Whether the command, ended with that code, left everything in order. `failed` is the call or
    // the suite that the host refused, if any.
    void expectOrder(const Step& step, PF_Err error, const std::string& failed = "");

    Layer& layer = addPicture();
    Effect& effect;
    const HostContext own{hostKinds().back()};

private:
    std::string freshFile(const std::string& place = "") {
        return write(place + std::to_string(++files_) + ".pbk",
                     kernelText("input image4 other; parameter float gain; parameter float2 spot;",
                                "dst = sampleNearest(src, outCoord());"));
    }
    void begin(const std::string& path) {
        layer.addMarker(0, path);
        effect.setUpSequence();
    }
    void beginWithout() {
        layer.stream(AEGP_LayerStream_MARKER)->keyframes.clear();
        effect.setUpSequence();
    }

    int files_ = 0;
    const std::string exported_ = write("Tvelmarondine_error_log.txt", ""); // of another day
    const std::string good_ = freshFile();
};

std::vector<Step> Life::steps() {
    const auto answer = [this](std::deque<std::optional<std::string>> all) {
        host.scripts.answers = std::move(all);
    };
    const auto render = [this] {
        effect.control(1).constant.value.layer_id = layer.id;
        return effect.render({}).error;
    };
    const auto withLog = [=, this] {
        // Whatever was exported is not in the log any more.
        if (std::filesystem::remove(exported_))
            begin(write(std::to_string(++files_) + ".pbk", kernelText("", "dst = nowhere;")));
        begin(good_);
        answer({"yes", folder.string()});
    };
    const auto moved = [=, this] {
        const std::filesystem::path file = freshFile("root" + std::to_string(files_) + "/sub/");
        host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder",
                             file.parent_path().parent_path().string());
        begin("/gone/" + file.filename().string());
        effect.flattenSequence();
    };
    return {
        {"global setup", [this] { plugin->setDown(); }, [this] { return plugin->setUp(); }},
        {"controls", [] {}, [this] { return effect.setUpParameters(); }},
        {"new instance", [=, this] { beginWithout(); }, [this] { return effect.setUpSequence(); }},
        {"choice of a file", [=, this] { beginWithout(), answer({freshFile()}); },
         [this] { return effect.doDialog(); }},
        {"marked file", [this] { layer.addMarker(0, freshFile()); },
         [this] { return effect.setUpSequence(); }},
        {"dressing", [this] { begin(good_); }, [this] { return effect.updateParamsUi(); }},
        {"frame", [] {}, render},
        {"report", withLog, [this] { return effect.doDialog(); }},
        {"about", withLog, [this] { return plugin->about(); }},
        {"flattening", [this] { begin(good_); }, [this] { return effect.flattenSequence(); }},
        {"moved file", moved, [this] { return effect.resetUpSequence(); }},
        {"end", [this] { begin(good_); }, [this] { return effect.setDownSequence(); }},
        {"global end", [this] { plugin->globalData() == nullptr ? plugin->setUp() : 0; },
         [this] { return plugin->setDown(); }},
    };
}

void Life::expectOrder(const Step& step, PF_Err error, const std::string& failed) {
    SCOPED_TRACE(step.name + (" with " + failed) + " failing: " + std::to_string(error));
    EXPECT_THAT(error, AnyOf(0, 1, 4, 77, 512, 516));
    const bool isSetup = step.name == std::string("global setup");
    const CurrentContext current = currentContext();
    // A new device leaves nothing current.
    EXPECT_TRUE(current == own.all || (isSetup && current == CurrentContext{}));
    std::vector<std::string> kept = ledger::takeFaults();
    // A chain that is broken hands null handles on, and the host refuses those.
    std::erase_if(kept, [](const std::string& fault) {
        return std::ranges::any_of(
            nullHandles, [&](const char* words) { return fault.find(words) != std::string::npos; });
    });
    // What the host does not take back stays with the effect; nothing else may.
    const auto cannotEnd = releases.find(failed);
    if (cannotEnd != releases.end())
        EXPECT_THAT(kept, Each(AnyOf(HasSubstr("did not release: " + cannotEnd->second),
                                     HasSubstr("a value is still out"))));
    else
        EXPECT_THAT(kept, IsEmpty());
    ledger::close();
    host.infoPanel.clear();
    host.scripts.clear();
}

} // namespace

TEST_F(Life, EverySuiteMayBeRefused) {
    for (const auto& [name, version] : suites::offered())
        for (const Step& step : steps()) {
            suites::refuse(name, version);
            step.prepare();
            own.makeCurrent();
            const PF_Err error = step.command();
            expectOrder(step, error, name);
            suites::allowAll();
            if (error != 0 && plugin->globalData() == nullptr) {
                EXPECT_EQ(step.command(), 0) << "asked again";
            }
        }
    for (const Step& step : steps()) {
        step.prepare();
        EXPECT_EQ(step.command(), 0) << step.name;
    }
}

TEST_F(Life, EveryCallOfTheHostMayFail) {
    for (const Step& step : steps())
        // Far in, the calls are those of one control after another: not every round is needed.
        for (std::uint64_t n = 1; !HasFailure(); n += n < 500 ? 1 : 37) {
            step.prepare();
            own.makeCurrent();
            calls::restart();
            calls::failAt(n);
            const PF_Err error = step.command();
            const std::string failed = calls::failedCall();
            calls::restart();
            expectOrder(step, error, failed);
            if (failed.empty()) {
                EXPECT_EQ(error, 0) << step.name;
                break;
            }
        }
}

TEST_F(Life, MemoryMayRunOutAtEveryHandle) {
    for (const Step& step : steps()) {
        const auto run = [&](std::uint64_t handles) {
            step.prepare();
            own.makeCurrent();
            memory::setHandlesLeft(handles);
            const std::uint64_t before = memory::handlesMade();
            const PF_Err error = step.command();
            memory::setHandlesLeft(memory::noLimit);
            expectOrder(step, error);
            EXPECT_EQ(error, handles == memory::noLimit ? 0 : PF_Err_OUT_OF_MEMORY)
                << step.name << " with " << handles;
            return memory::handlesMade() - before;
        };
        const std::uint64_t needed = run(memory::noLimit);
        for (std::uint64_t left = 0; left < needed && !HasFailure(); ++left)
            run(left);
        run(memory::noLimit);
    }
}
