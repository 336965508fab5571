// Failures of the host's suites, calls and memory: every command must return an error code, restore
// the host's state, and work when it is sent again.
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

constexpr std::array nullHandles = {"never acquired", "not a valid handle of a",
                                    "a marker that is not in an acquired value"};

// If one of these calls or suites fails, an object of this kind cannot be released.
const std::map<std::string, std::string> releases = {
    {"ReleaseSuite", "suite"},
    {"AEGP_DisposeStream", "stream "},
    {"AEGP_DisposeEffect", "effect"},
    {"AEGP_DisposeStreamValue", "stream value"},
    {"AEGP_FreeMemHandle", "memory handle"},
    {"AEGP_EndUndoGroup", "undo group"},
    {"checkin_param", "parameter"},
    // If the text cannot be read, its handle is not freed.
    {"AEGP_LockMemHandle", "memory handle"},
    {"AEGP_GetMemHandleSize", "memory handle"},
    {"AcquireSuite", ""}, // the call that would release something fails
    {"AEGP Memory Suite", "memory handle"},
    {"AEGP Effect Suite", "effect"},
};

// A command, and its preparation before each round.
struct Step {
    const char* name;
    std::function<void()> prepare;
    std::function<PF_Err()> command;
};

// One instance, with every command and every service that the commands use.
class InstanceFailures : public ModuleTest {
protected:
    InstanceFailures() : effect(addEffect(layer)) {
        host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", "/nowhere");
    }

    std::vector<Step> steps();
    // Checks the state after a command that returned `error`. `failed` is the call or suite that
    // was made to fail, if any.
    void expectOrder(const Step& step, PF_Err error, const std::string& failed = "");

    Layer& layer = addPicture();
    Effect& effect;
    const HostContext own{hostKinds().back()};

private:
    std::string newFile(const std::string& place = "") {
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
    const std::string exported_ = write("Tvelmarondine_error_log.txt", ""); // exported before
    const std::string good_ = newFile();
};

std::vector<Step> InstanceFailures::steps() {
    const auto answer = [this](std::deque<std::optional<std::string>> all) {
        host.scripts.answers = std::move(all);
    };
    const auto render = [this] {
        effect.control(1).constant.value.layer_id = layer.id;
        return effect.render({}).error;
    };
    const auto withLog = [=, this] {
        // The exported log is cleared, so it is filled again.
        if (std::filesystem::remove(exported_))
            begin(write(std::to_string(++files_) + ".pbk", kernelText("", "dst = nowhere;")));
        begin(good_);
        answer({"yes", folder.string()});
    };
    const auto moved = [=, this] {
        const std::filesystem::path file = newFile("root" + std::to_string(files_) + "/sub/");
        host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder",
                             file.parent_path().parent_path().string());
        begin("/gone/" + file.filename().string());
        effect.flattenSequence();
    };
    return {
        {"global setup", [this] { plugin->setDown(); }, [this] { return plugin->setUp(); }},
        {"controls", [] {}, [this] { return effect.setUpParameters(); }},
        {"new instance", [=, this] { beginWithout(); }, [this] { return effect.setUpSequence(); }},
        {"choice of a file", [=, this] { beginWithout(), answer({newFile()}); },
         [this] { return effect.doDialog(); }},
        {"marked file", [this] { layer.addMarker(0, newFile()); },
         [this] { return effect.setUpSequence(); }},
        {"update of the controls", [this] { begin(good_); },
         [this] { return effect.updateParamsUi(); }},
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

void InstanceFailures::expectOrder(const Step& step, PF_Err error, const std::string& failed) {
    SCOPED_TRACE(step.name + (" with " + failed) + " failing: " + std::to_string(error));
    EXPECT_THAT(error, AnyOf(0, 1, 4, 77, 512, 516));
    const bool isSetup = step.name == std::string("global setup");
    const CurrentContext current = currentContext();
    // A new device leaves no context current.
    EXPECT_TRUE(current == own.all || (isSetup && current == CurrentContext{}));
    std::vector<std::string> kept = ledger::takeFaults();
    // After a failure the module passes null handles on, which the host rejects.
    std::erase_if(kept, [](const std::string& fault) {
        return std::ranges::any_of(
            nullHandles, [&](const char* words) { return fault.find(words) != std::string::npos; });
    });
    // Only an object whose release failed may stay acquired.
    const auto cannotEnd = releases.find(failed);
    if (cannotEnd != releases.end())
        EXPECT_THAT(kept, Each(AnyOf(HasSubstr("did not release: " + cannotEnd->second),
                                     HasSubstr("a value that is not disposed of"))));
    else
        EXPECT_THAT(kept, IsEmpty());
    ledger::reset();
    host.infoPanel.clear();
    host.scripts.clear();
}

} // namespace

TEST_F(InstanceFailures, EverySuiteMayBeMissing) {
    for (const auto& [name, version] : suites::offered())
        for (const Step& step : steps()) {
            suites::refuse(name, version);
            step.prepare();
            own.makeCurrent();
            const PF_Err error = step.command();
            expectOrder(step, error, name);
            suites::allowAll();
            if (error != 0 && plugin->globalData() == nullptr) {
                EXPECT_EQ(step.command(), 0) << "sent again";
            }
        }
    for (const Step& step : steps()) {
        step.prepare();
        EXPECT_EQ(step.command(), 0) << step.name;
    }
}

TEST_F(InstanceFailures, EveryCallOfTheHostMayFail) {
    for (const Step& step : steps())
        // Most calls are repetitions for one control after another, so later rounds are sampled.
        for (std::uint64_t n = 1; !HasFailure(); n += n < 500 ? 1 : 37) {
            step.prepare();
            own.makeCurrent();
            calls::reset();
            calls::failAt(n);
            const PF_Err error = step.command();
            const std::string failed = calls::failedCall();
            calls::reset();
            expectOrder(step, error, failed);
            if (failed.empty()) {
                EXPECT_EQ(error, 0) << step.name;
                break;
            }
        }
}

TEST_F(InstanceFailures, MemoryMayRunOutAtEveryHandle) {
    for (const Step& step : steps()) {
        const auto run = [&](std::uint64_t handles) {
            step.prepare();
            own.makeCurrent();
            memory::setHandlesLeft(handles);
            const std::uint64_t before = memory::handlesAllocated();
            const PF_Err error = step.command();
            memory::setHandlesLeft(memory::noLimit);
            expectOrder(step, error);
            EXPECT_EQ(error, handles == memory::noLimit ? 0 : PF_Err_OUT_OF_MEMORY)
                << step.name << " with " << handles;
            return memory::handlesAllocated() - before;
        };
        const std::uint64_t needed = run(memory::noLimit);
        for (std::uint64_t left = 0; left < needed && !HasFailure(); ++left)
            run(left);
        run(memory::noLimit);
    }
}
