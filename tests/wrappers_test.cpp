#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "host/composition.h"
#include "host/effect.h"
#include "host/host_services.h"
#include "host/interface.h"
#include "host/item.h"
#include "host/layer.h"
#include "host/marker.h"
#include "host/memory.h"
#include "hostkit/calls.h"
#include "hostkit/ledger.h"
#include "hostkit/references.h"
#include "hostkit/suite_tables.h"
#include "hostkit/suites.h"
#include "hostkit/text.h"
#include "tests/support/running_command.h"

namespace calls = hostkit::calls;
namespace ledger = hostkit::ledger;
namespace suites = hostkit::suites;
namespace tables = hostkit::tables;

namespace {

constexpr A_long pluginId = 7;
const std::u16string comment =
    u"a comment that is longer than a string keeps in itself \xd83d\xde00";

// A layer with a marker and an effect of one control, whose module is sent no command.
class Scene : public RunningCommand {
protected:
    Scene() {
        currentPluginId = pluginId;
        layer.addMarker(0, hostkit::toUtf8(comment));
        effect.addControl({{1}, PF_Param_SLIDER, "Control", 0, {}}); // behind the input layer
        group.name = u"Effect";
        group.matchName = "effect";
        control().matchName = "control";
        // The host does not look at the id; whether it is handed on shows here.
        interfaces.AEGP_GetNewEffectForEffect = [](AEGP_PluginID plugin, PF_ProgPtr running,
                                                   AEGP_EffectRefH* reference) {
            EXPECT_EQ(plugin, pluginId);
            return tables::interfaceSuite().AEGP_GetNewEffectForEffect(plugin, running, reference);
        };
        suites::offer(interfaces.name, interfaces.version, &interfaces);
    }
    ~Scene() override { layer.effects.clear(); }

    hostkit::Stream& control() { return effect.control(1); }

    // Hides the control, renames its parent and reads the marker.
    std::u16string useWrappers() {
        AEO::Interface interface(basic, reinterpret_cast<PF_ProgPtr>(&effect));
        {
            AEO::Effect effect(basic, interface.newEffect());
            AEO::Stream stream(basic, effect.newParamStream(1));
            stream.setDynamicFlag(AEGP_DynStreamFlag_HIDDEN, true, true);
            AEO::Stream parent(basic, stream.newParent());
            parent.setName(u"A new name");
        }
        AEO::Layer onLayer(basic, interface.layer());
        AEO::Stream markers(basic, onLayer.newLayerStream(AEGP_LayerStream_MARKER));
        if (markers.numKeyframes() < 1)
            return u"no keyframe";
        AEO::Marker marker(markers, 0);
        const WideString text =
            AEO::readWideText(basic, marker.newString(AEGP_MarkerString_COMMENT));
        return {text.begin(), text.end()};
    }

    // Does all that in a command of its own, and tells what came of it.
    struct Outcome {
        long thrown = 0;
        std::u16string text;
        std::vector<std::string> stayed; // with the module
    };
    Outcome runCommand() {
        Outcome outcome;
        try {
            const CommandScope command(PF_Cmd_RENDER, pluginId, host.inData());
            outcome.text = useWrappers();
        } catch (long err) {
            outcome.thrown = err;
        }
        // A broken chain hands null handles on; that is no fault of the wrappers.
        for (const std::string& fault : ledger::takeFaults())
            EXPECT_EQ(fault.find("any more"), fault.npos) << fault;
        outcome.stayed = ledger::outstanding();
        ledger::close();
        return outcome;
    }

    SPBasicSuite* basic = host.inData()->pica_basicP;
    hostkit::Composition& comp = host.project.addComposition("Comp", 640, 360);
    hostkit::Layer& layer = comp.addLayer("", std::make_shared<hostkit::Footage>());
    hostkit::Plugin plugin{TVM_MODULE_PATH};
    hostkit::Effect& effect = hostkit::addEffect(plugin, layer);
    hostkit::Stream& group = *effect.group;
    AEGP_PFInterfaceSuite1 interfaces = tables::interfaceSuite();
};

bool isOneMemoryHandle(const std::vector<std::string>& stayed) {
    return stayed.size() == 1 && stayed[0].starts_with("memory handle");
}

} // namespace

TEST_F(Scene, EveryCallOfAChainMayFailAndNothingStaysLent) {
    calls::restart();
    EXPECT_EQ(runCommand().text, comment);
    EXPECT_TRUE(control().isHidden() && group.name == u"A new name");
    const std::uint64_t total = calls::count();
    EXPECT_GT(total, 40U);
    for (std::uint64_t n = 1; n <= total; ++n) {
        calls::restart();
        calls::failAt(n);
        const Outcome outcome = runCommand();
        const std::string failed = calls::failedCall();
        EXPECT_TRUE(outcome.thrown == 0 || outcome.thrown == PF_Err_OUT_OF_MEMORY) << failed;
        // What the host does not take back stays, and so does text that it does not let be read.
        const bool isRefusedReturn = failed == "ReleaseSuite" || failed == "AEGP_FreeMemHandle" ||
                                     failed == "AEGP_DisposeStream" ||
                                     failed == "AEGP_DisposeEffect" ||
                                     failed == "AEGP_DisposeStreamValue";
        const bool isUnreadable = failed == "AEGP_LockMemHandle" || failed == "AcquireSuite";
        EXPECT_TRUE(outcome.stayed.empty() || isRefusedReturn ||
                    (isUnreadable && isOneMemoryHandle(outcome.stayed)))
            << failed << ": " << outcome.stayed[0];
    }
    calls::restart();
}

TEST_F(Scene, ARefusedSuiteEndsTheCommandOrSkipsTheCall) {
    struct Expected {
        long thrown = 0;
        std::u16string text = comment;
        std::size_t stayed = 0;
    };
    // What only the refused suite could take back stays with the module.
    const std::map<std::string, Expected> outcomes = {{"AEGP PF Interface Suite", {516, u"", 0}},
                                                      {"AEGP Stream Suite", {516, u"", 0}},
                                                      {"AEGP Dynamic Stream Suite", {516, u"", 0}},
                                                      {"AEGP Keyframe Suite", {516, u"", 0}},
                                                      {"AEGP Effect Suite", {0, comment, 1}},
                                                      {"AEGP Marker Suite", {0, u"", 0}},
                                                      {"AEGP Memory Suite", {0, u"", 1}}};
    for (const auto& [name, version] : suites::offered()) {
        const auto known = outcomes.find(name);
        const Expected expected = known == outcomes.end() ? Expected() : known->second;
        suites::refuse(name, version);
        const Outcome outcome = runCommand();
        suites::allowAll();
        EXPECT_EQ(outcome.thrown, expected.thrown) << name;
        EXPECT_EQ(outcome.text, expected.text) << name;
        EXPECT_EQ(outcome.stayed.size(), expected.stayed) << name;
    }
}

TEST_F(Scene, AWrapperWithoutASuiteOfItsOwnAsksTheTableOrTellsWhy) {
    const auto handle = reinterpret_cast<AEGP_LayerH>(&layer);
    suites::offer("AEGP Item Suite", 13, nullptr); // lent with success, but there is none
    suites::refuse("AEGP Comp Suite", 11);
    {
        const CommandScope command(PF_Cmd_RENDER, pluginId, host.inData());
        AEO::Layer named(basic, handle);
        AEO::Stream stream(nullptr, named.newLayerStream(AEGP_LayerStream_MARKER));
        EXPECT_EQ(stream.numKeyframes(), 1);

        AEO::Item item(basic, nullptr);
        AEO::Composition composition(basic, nullptr);
        EXPECT_EQ(composition.frameRate(), 0);
        EXPECT_EQ(composition.err(), 1) << "the host's code";
        EXPECT_EQ(item.err(), 516);
        EXPECT_EQ(std::pair(item.pixelAspect().num, item.pixelAspect().den), std::pair(0, 1U));
        EXPECT_EQ(AEO::Layer(nullptr, handle).id(), 0);
        EXPECT_EQ(startUndoGroup(nullptr, ""), 516);

        const std::uint64_t before = calls::count();
        const AEO::Effect unused(basic, nullptr);
        EXPECT_EQ(AEO::Memory(basic, nullptr).lock(), nullptr);
        EXPECT_EQ(composition.numLayers(), 0) << "an error is sticky";
        EXPECT_EQ(calls::count(), before);
    }
    EXPECT_EQ(ledger::outstanding(), std::vector<std::string>{"suite \"AEGP Item Suite 13\""});
    ledger::close();
}

TEST_F(Scene, LayersItemsAndCompositionsTellWhatTheyAre) {
    hostkit::Layer& eye = comp.addCamera("Camera", 500);
    layer.source->name = "pictures";
    layer.source->pixelAspect = {2, 3};
    layer.source->height = 20;
    layer.inSeconds = 2;
    comp.now = {100, 25};
    double next = 10;
    for (auto& [which, stream] : layer.streams)
        if (stream.type != AEGP_StreamType_MARKER)
            stream.constant.value.three_d = {next++, 1, 2};

    AEO::Composition composition(basic, reinterpret_cast<AEGP_CompH>(&comp));
    AEO::Layer first(basic, composition.layer(0));
    AEO::CameraLayer camera(basic, composition.layerById(eye.id));
    AEO::Item item(basic, first.sourceItem());
    first.setName(u"first");
    first.setFlag(AEGP_LayerFlag_VIDEO_ACTIVE, false);
    composition.setFrameRate(30);
    constexpr A_Time start{0, 1};
    const auto seconds = [](const A_Time& time) { return 1.0 * time.value / time.scale; };
    const auto at = [&](auto member) {
        return (first.*member)(AEGP_LTimeMode_LayerTime, start, false);
    };
    const std::tuple<const char*, double, double> numbers[] = {
        {"layers", composition.numLayers(), 2},
        {"rate", composition.frameRate(), 30},
        {"dimensions", 1000 * AEO::Item(basic, composition.item()).width() + item.height(), 640020},
        {"aspect", 10 * item.pixelAspect().num + item.pixelAspect().den, 23},
        {"id", first.id(), layer.id},
        {"flags", first.flags() + (first.isVideoReallyOn() ? 1 : 0), 0},
        {"type", 10 * first.objectType() + camera.objectType(), 2},
        {"in", seconds(first.inPoint(AEGP_LTimeMode_CompTime)), 2},
        {"now", seconds(first.currentTime(AEGP_LTimeMode_LayerTime)), 2},
        {"duration", seconds(first.duration(AEGP_LTimeMode_LayerTime)), 10},
        {"anchor point", at(&AEO::Layer::anchorPoint).three_d.x, 10},
        {"position", at(&AEO::Layer::position).three_d.x, 11},
        {"scale", at(&AEO::Layer::scale).three_d.z, 2},
        {"rotation", at(&AEO::Layer::rotation), 13},
        {"opacity", at(&AEO::Layer::opacity), 14},
        {"about x", at(&AEO::Layer::rotateX), 15},
        {"about y", at(&AEO::Layer::rotateY), 16},
        {"orientation", at(&AEO::Layer::orientation).three_d.x, 17},
        {"to world", camera.toWorld(start).mat[3][0], 320},
        {"zoom", camera.zoom(AEGP_LTimeMode_CompTime, start), 500},
        {"camera type", camera.cameraType(), AEGP_CameraType_PERSPECTIVE},
        {"default", camera.defaultDistance(composition.handle()), comp.defaultCameraDistance},
        {"effects", first.numEffects() + AEO::Effect(basic).numInstalledEffects(), 2}};
    for (const auto& [name, value, expected] : numbers)
        EXPECT_EQ(value, expected) << name;
    camera.setParent(first.handle());
    EXPECT_EQ(camera.parent(), first.handle());
    EXPECT_EQ(first.parentComp(), composition.handle());
    EXPECT_EQ(first.name() + u"," + first.sourceName() + u"," + item.name(),
              u"first,pictures,pictures");
    EXPECT_EQ(first.err() + camera.err() + item.err() + composition.err(), 0);
}

TEST_F(Scene, StreamsTakeKeyframesExpressionsAndNames) {
    AEO::Stream parent(basic, hostkit::references::lendStream(group, "the group"));
    AEO::Stream stream(basic, parent.newChild("control"));
    EXPECT_FALSE(stream.isModified());
    stream.setValue(2.5);
    {
        const AEO::StreamValue value(stream, stream.newValue(AEGP_LTimeMode_LayerTime, {0, 1}));
        stream.setValue(4);
        stream.setValue(value);
    }
    EXPECT_EQ(control().constant.value.one_d, 2.5);
    EXPECT_TRUE(stream.isModified());
    stream.setExpression(u"\xe9");
    stream.setExpressionEnabled(true);
    EXPECT_TRUE(stream.isExpressionEnabled() && stream.expression() == u"\xe9");
    EXPECT_EQ(stream.narrowExpression(), "\xc3\xa9");

    const AEGP_AddKeyframesInfoH batch = stream.startAddKeyframes();
    for (const double value : {7.0, 9.0}) {
        AEGP_StreamVal2 keyframe{};
        keyframe.one_d = value;
        const A_Time time{static_cast<A_long>(value), 1};
        stream.setAddedKeyframe(batch, stream.addKeyframe(batch, AEGP_LTimeMode_LayerTime, time),
                                keyframe);
    }
    stream.endAddKeyframes(batch, true);
    EXPECT_EQ(stream.insertKeyframe(AEGP_LTimeMode_LayerTime, {1, 2}), 0);
    AEGP_StreamVal2 first{};
    first.one_d = 5;
    stream.setKeyframeValue(0, first);
    stream.setKeyframeInterpolation(0, {AEGP_KeyInterp_LINEAR, AEGP_KeyInterp_HOLD});
    EXPECT_EQ(stream.keyframeInterpolation(0).out, AEGP_KeyInterp_HOLD);
    stream.setKeyframeFlag(0, 1, true);
    EXPECT_EQ(stream.keyframeFlags(0), 1);
    stream.deleteKeyframe(1);
    EXPECT_EQ(stream.numKeyframes(), 2);
    EXPECT_EQ(stream.keyframeTime(1, AEGP_LTimeMode_LayerTime).value, 9 * 120000);
    EXPECT_EQ(control().at(8).value.one_d, 5);

    EXPECT_EQ(parent.name() + u"," + stream.name(), u"Effect,Control");
    EXPECT_EQ(parent.matchName() + "," + stream.matchName(), "effect,control");
    EXPECT_EQ(parent.groupingType(), AEGP_StreamGroupingType_NAMED_GROUP);
    EXPECT_EQ(std::tuple(parent.numInGroup(), stream.indexInParent(), stream.dynamicFlags(),
                         stream.type(), parent.canAdd("control")),
              std::tuple(2, 1, 0, AEGP_StreamType_OneD, false));
    EXPECT_EQ(AEO::Stream(basic, parent.newChild(1)).matchName(), "control");
    EXPECT_EQ(stream.err() + parent.err(), 0);
}

TEST_F(Scene, MemoryIsOwned) {
    AEO::Memory memory(basic, "a name", 10, AEGP_MemFlag_CLEAR);
    EXPECT_EQ(*static_cast<char*>(memory.lock()), 0);
    memory.unlock();
    memory.resize("a name", 20);
    EXPECT_EQ(memory.size(), 20U);
    EXPECT_EQ(memory.err(), 0);
}
