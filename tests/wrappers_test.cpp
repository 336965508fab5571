#include <gtest/gtest.h>

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
#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/calls/references.h"
#include "hostkit/suites/basic_suite.h"
#include "hostkit/suites/tables.h"
#include "tests/support/running_command.h"

namespace calls = hostkit::calls;
namespace ledger = hostkit::ledger;
namespace suites = hostkit::suites;
namespace tables = hostkit::tables;

namespace {

enum : A_long { pluginId = 7 };

// A layer with an effect of one control, whose module gets no command.
class Scene : public RunningCommand {
protected:
    Scene() {
        currentPluginId = pluginId;
        effect.addControl({{1}, PF_Param_SLIDER, "Control", 0, {}}); // index 1
        group.name = u"Effect";
        group.matchName = "effect";
        control().matchName = "control";
    }
    ~Scene() override { layer.effects.clear(); }

    hostkit::Stream& control() { return effect.control(1); }

    SPBasicSuite* basic = host.inData()->pica_basicP;
    hostkit::Composition& comp = host.project.addComposition("Comp", 640, 360);
    hostkit::Layer& layer = comp.addLayer("", std::make_shared<hostkit::Footage>());
    AEGP_LayerH handle = reinterpret_cast<AEGP_LayerH>(&layer);
    hostkit::Plugin plugin{TVM_MODULE_PATH};
    hostkit::Effect& effect = hostkit::addEffect(plugin, layer);
    hostkit::Stream& group = *effect.group;
};

} // namespace

TEST_F(Scene, AWrapperWithoutASuiteUsesTheTableOrReports) {
    suites::offer("AEGP Item Suite", 13, nullptr); // acquisition succeeds and returns a null table
    suites::refuse("AEGP Comp Suite", 11);
    {
        const CommandScope command(PF_Cmd_RENDER, pluginId, host.inData());
        AEO::Layer named(basic, handle);
        AEO::Stream stream(nullptr, named.newLayerStream(AEGP_LayerStream_OPACITY));
        EXPECT_EQ(stream.type(), AEGP_StreamType_OneD);

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
    ledger::reset();
}

TEST_F(Scene, LayerProperties) {
    double next = 10;
    for (auto& [which, stream] : layer.streams)
        if (stream.type != AEGP_StreamType_MARKER)
            stream.constant.value.three_d = {next++, 1, 2};
    hostkit::Stream& opacity = *layer.stream(AEGP_LayerStream_OPACITY);
    opacity.expression = u"value / 2";
    opacity.isExpressionEnabled = true;
    AEO::Composition composition(basic, reinterpret_cast<AEGP_CompH>(&comp));
    AEO::Layer first(basic, composition.layer(0));
    const auto at = [&](auto member) {
        return (first.*member)(AEGP_LTimeMode_LayerTime, A_Time{0, 1}, false);
    };
    const std::tuple<const char*, double, double> numbers[] = {
        {"flags", first.flags(), AEGP_LayerFlag_VIDEO_ACTIVE},
        {"anchor point", at(&AEO::Layer::anchorPoint).three_d.x, 10},
        {"position", at(&AEO::Layer::position).three_d.x, 11},
        {"scale", at(&AEO::Layer::scale).three_d.z, 2},
        {"rotation", at(&AEO::Layer::rotation), 13},
        {"opacity", at(&AEO::Layer::opacity), 7},
        {"about x", at(&AEO::Layer::rotateX), 15},
        {"about y", at(&AEO::Layer::rotateY), 16},
        {"orientation", at(&AEO::Layer::orientation).three_d.x, 17}};
    for (const auto& [name, value, expected] : numbers)
        EXPECT_EQ(value, expected) << name;
    first.setName(u"first");
    first.setFlag(AEGP_LayerFlag_VIDEO_ACTIVE, false);
    EXPECT_EQ(first.flags() + (first.isVideoReallyOn() ? 1 : 0), 0);
    EXPECT_EQ(first.name(), u"first");
    EXPECT_EQ(first.err() + composition.err(), 0);
}

TEST_F(Scene, StreamsTakeKeyframesExpressionsAndNames) {
    AEO::Stream parent(basic, hostkit::references::newStreamRef(group, "the group"));
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

    for (const bool isAdded : {false, true}) {
        const AEGP_AddKeyframesInfoH batch = stream.startAddKeyframes();
        for (const A_long second : {9, 7}) {
            const A_long index = stream.addKeyframe(batch, AEGP_LTimeMode_LayerTime, {second, 1});
            stream.setAddedKeyframe(batch, index, {.one_d = 10.0 * second});
        }
        EXPECT_EQ(stream.numKeyframes(), 0);
        stream.endAddKeyframes(batch, isAdded);
    }
    EXPECT_EQ(stream.insertKeyframe(AEGP_LTimeMode_LayerTime, {1, 2}), 0);
    stream.setKeyframeInterpolation(1, {AEGP_KeyInterp_LINEAR, AEGP_KeyInterp_HOLD});
    EXPECT_EQ(control().at(8).value.one_d, 70);
    stream.deleteKeyframe(0);
    EXPECT_EQ(stream.numKeyframes(), 2);
    EXPECT_EQ(parent.name() + u"," + stream.name(), u"Effect,Control");
    stream.setDynamicFlag(AEGP_DynStreamFlag_HIDDEN, false, true);
    EXPECT_EQ(stream.dynamicFlags(), AEGP_DynStreamFlag_HIDDEN);
    EXPECT_EQ(AEO::Stream(basic, parent.newChild(1)).matchName(), "control");
    EXPECT_EQ(stream.err() + parent.err(), 0);
}

// Results that this host never returns, and arguments that it ignores.
TEST_F(Scene, PassesArgumentsUnchanged) {
    static std::string recorded;
    recorded.clear();
    AEGP_DynamicStreamSuite5 dynamics = tables::dynamicStreamSuite();
    dynamics.AEGP_CanAddStream = [](AEGP_StreamRefH, const char* matchName,
                                    A_Boolean* canAdd) -> A_Err {
        *canAdd = matchName == std::string_view("new") ? 1 : 0;
        return 0;
    };
    suites::offer(dynamics.name, dynamics.version, &dynamics);
    AEGP_EffectSuite3 effects = tables::effectSuite();
    effects.AEGP_ApplyEffect = [](AEGP_PluginID plugin, AEGP_LayerH layer,
                                  AEGP_InstalledEffectKey key, AEGP_EffectRefH* applied) {
        recorded = std::to_string(plugin) + " applies " + std::to_string(key);
        return tables::effectSuite().AEGP_GetLayerEffectByIndex(plugin, layer, 0, applied);
    };
    suites::offer(effects.name, effects.version, &effects);
    AEO::Stream parent(basic, hostkit::references::newStreamRef(group, "the group"));
    EXPECT_TRUE(parent.canAdd("new"));
    EXPECT_FALSE(parent.canAdd("control"));
    const A_long key = plugin.live.number();
    AEO::Layer onLayer(basic, handle);
    AEO::Effect applied(basic, onLayer.applyEffect(key));
    EXPECT_EQ(recorded, std::to_string(pluginId) + " applies " + std::to_string(key));
    EXPECT_EQ(applied.installedKey(), key);

    const std::uint64_t before = calls::count();
    { const AEO::Stream nothing(basic, nullptr); }
    EXPECT_EQ(calls::count() - before, 3U) << "acquired, a null stream disposed of, released";

    layer.inSeconds = 2;
    AEO::Interface interface(basic, reinterpret_cast<PF_ProgPtr>(&effect));
    const A_Time time = interface.compTime(5, 25);
    EXPECT_EQ(std::pair(time.value, time.scale), std::pair(A_long{55}, 25U));
    AEO::Stream position(basic, onLayer.newLayerStream(AEGP_LayerStream_POSITION));
    position.setValue(1, 2, 3);
    const auto set = layer.stream(AEGP_LayerStream_POSITION)->constant.value.three_d;
    EXPECT_EQ(std::tuple(set.x, set.y, set.z), std::tuple(1, 2, 3));
    EXPECT_EQ(onLayer.err() + applied.err() + parent.err() + position.err(), 0);
}

TEST_F(Scene, EffectsAreFoundByIndexAndKey) {
    hostkit::Effect& second = hostkit::addEffect(plugin, layer);
    second.addControl({{2}, PF_Param_SLIDER, "Other", 0, {}});
    AEO::Layer onLayer(basic, handle);
    AEO::Effect found(basic, onLayer.newEffect(1));
    EXPECT_EQ(AEO::Stream(basic, found.newParamStream(1)).name(), u"Other");
    EXPECT_EQ(onLayer.newEffect(2), nullptr);
    EXPECT_NE(onLayer.err(), 0);
    const A_long key = plugin.live.number();
    EXPECT_EQ(std::pair(found.installedKey(), found.flags()), std::pair(key, A_long{1}));
    const hostkit::Plugin other{TVM_MODULE_PATH};
    AEO::Effect all(basic);
    const std::array keys{all.nextInstalledEffect(0), all.nextInstalledEffect(key),
                          all.nextInstalledEffect(other.live.number())};
    EXPECT_EQ(keys, (std::array{key, other.live.number(), 0}));
    EXPECT_EQ(std::string(all.matchName(key)), plugin.pipl().text("eMNA"));
    EXPECT_EQ(all.err() + all.numInstalledEffects(), 2);
    EXPECT_EQ(std::string(all.matchName(key + 100)), "");
    EXPECT_EQ(ledger::takeFaults().size(), 2U) << "the third effect and the unknown key";
}

TEST_F(Scene, MasksLightsAndTextsAreReadAndChanged) {
    constexpr A_Time start{0, 1};
    layer.addMask({true, {{1, 2, 0, 0, 3, 4}, {5, 6, 0, 0, 0, 0}}});
    hostkit::Mask& second = layer.addMask({});
    AEO::Layer onLayer(basic, handle);
    EXPECT_EQ(onLayer.numMasks(), 2);
    const std::array masks{onLayer.newMask(0), onLayer.newMask(1)};
    EXPECT_EQ(onLayer.maskId(masks[1]), second.id);
    {
        AEO::Stream from(basic, onLayer.newOutlineStream(masks[0]));
        AEO::Stream to(basic, onLayer.newOutlineStream(masks[1]));
        EXPECT_EQ(from.type(), AEGP_StreamType_MASK);
        AEO::MaskOutline outline(from, AEGP_LTimeMode_LayerTime, start);
        AEO::MaskOutline target(to, AEGP_LTimeMode_LayerTime, start);
        EXPECT_EQ(std::tuple(outline.isOpen(), outline.numSegments(), target.numSegments()),
                  std::tuple(true, 1, 0));
        const AEGP_MaskVertex vertex = outline.vertex(0);
        EXPECT_EQ(std::tuple(vertex.x, vertex.y, vertex.tan_out_x, vertex.tan_out_y),
                  std::tuple(1, 2, 3, 4));
        outline.deleteVertex(0); // of a copy
        target.createVertex(0);
        target.createVertex(1);
        target.setVertex(1, vertex);
        EXPECT_EQ(std::pair(target.isOpen(), target.numSegments()), std::pair(false, 2));
        target.setOpen(true);
        to.setValue(target);
        EXPECT_EQ(outline.err() + target.err() + from.err() + to.err(), 0);
    }
    EXPECT_EQ(layer.masks[0]->outline.constant.outline->vertices.size(), 2U);
    const hostkit::Outline& changed = *second.outline.constant.outline;
    ASSERT_TRUE(changed.isOpen && changed.vertices.size() == 2U);
    EXPECT_EQ(std::pair(changed.vertices[0].x, changed.vertices[1].y), std::pair(0.0, 2.0));
    for (AEGP_MaskRefH mask : masks)
        onLayer.disposeMask(mask);

    hostkit::Stream source{u"Source Text", "text", AEGP_StreamType_TEXT_DOCUMENT};
    source.constant.document = std::make_shared<hostkit::TextDocument>();
    source.constant.document->text = u"\xd83d\xde00";
    {
        AEO::Stream texts(basic, hostkit::references::newStreamRef(source, "text"));
        AEO::TextDocument document(texts, AEGP_LTimeMode_LayerTime, start);
        EXPECT_EQ(document.text(), u"\xd83d\xde00");
        document.setText(u"n\xe9w");
        EXPECT_EQ(source.constant.document->text, u"\xd83d\xde00") << "a copy until it is set";
        texts.setValue(document);
        EXPECT_EQ(document.err() + texts.err(), 0);
    }
    EXPECT_EQ(source.constant.document->text, u"n\xe9w");

    layer.lightType = AEGP_LightType_POINT;
    AEO::LightLayer light(basic, onLayer.handle());
    layer.type = AEGP_ObjectType_LIGHT;
    EXPECT_EQ(light.lightType(), AEGP_LightType_POINT);
}
