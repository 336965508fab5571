// The substitute host's scene suites, called through their tables. Positions and values are
// computed by hand; after every test nothing may be acquired and no fault recorded.
#include <functional>
#include <optional>
#include <tuple>

#include <gtest/gtest.h>

#include "hostkit/calls/ledger.h"
#include "hostkit/host.h"
#include "hostkit/suites/tables.h"
#include "tests/support/acquired_suites.h"

namespace {

using namespace hostkit;
using namespace hostkit::tables;

const AEGP_StreamSuite9& streams = streamSuite();
const AEGP_KeyframeSuite4& keys = keyframeSuite();
const AEGP_LayerSuite12& layers = layerSuite();
constexpr AEGP_PluginID plugin = 1;

// Calls the function and returns the value it writes through its last argument.
template<class... Formal, class... Actual>
auto ask(A_Err (*function)(Formal...), Actual... actual) {
    using Place = std::tuple_element_t<sizeof...(Formal) - 1, std::tuple<Formal...>>;
    std::remove_pointer_t<Place> answer{};
    EXPECT_EQ(function(actual..., &answer), 0);
    return answer;
}

StreamValue number(double x, double y = 0, double z = 0) {
    StreamValue value;
    value.value.three_d = {x, y, z};
    return value;
}

class Scene : public testing::Test {
protected:
    Scene() { host.registeredPlugins = {"test"}; }
    ~Scene() override {
        acquired.reset();
        EXPECT_TRUE(ledger::takeFaults().empty() && ledger::outstanding().empty());
    }

    AEGP_StreamRefH acquire(AEGP_LayerStream which) {
        return ask(streams.AEGP_GetNewLayerStream, plugin, layerH, which);
    }
    Stream& stream(AEGP_LayerStream which) { return *layer.stream(which); }

    Host host;
    std::optional<AcquiredSuites> acquired{std::in_place};
    Composition& comp = host.project.addComposition("comp", 360, 200);
    Layer& layer = comp.addLayer("", std::make_shared<Footage>(Footage{{"leaf", 40, 20}, {}}));
    AEGP_LayerH layerH = reinterpret_cast<AEGP_LayerH>(&layer);
};

TEST_F(Scene, StreamsInterpolateKeyframes) {
    Stream& opacity = stream(AEGP_LayerStream_OPACITY);
    for (const auto& [seconds, value] : {std::pair{4, 60}, {1, 10}, {5, 100}, {2, 20}})
        opacity.keyframes[opacity.addKeyframe(seconds)].value = number(value);
    opacity.keyframes[1].out = AEGP_KeyInterp_HOLD;
    const std::pair<double, double> cases[] = {{0, 10}, {1, 10}, {1.25, 12.5}, {2, 20},
                                               {3, 20}, {4, 60}, {4.5, 80},    {9, 100}};
    for (const auto& [time, value] : cases)
        EXPECT_EQ(opacity.at(time).value.one_d, value) << time;
    opacity.keyframes.clear();
    opacity.choices = 3; // a popup's value is clamped to its choices
    opacity.set(number(7), 0);
    EXPECT_EQ(opacity.at(0).value.one_d, 3);
}

TEST_F(Scene, ExpressionsChangeTheirStreams) {
    const std::tuple<AEGP_LayerStream, const char16_t*, double> cases[] = {
        // stream, expression, x at 2 seconds
        {AEGP_LayerStream_OPACITY, u"value / 2 + time", 52},
        {AEGP_LayerStream_OPACITY, u"nothing.here", 100},
        {AEGP_LayerStream_OPACITY, u"[1, 2]", 100}, // needs one number
        {AEGP_LayerStream_POSITION, u"[value[0] * 2, value[1], 0.5]", 360},
        {AEGP_LayerStream_POSITION, u"7", 180}};
    for (const auto& [which, expression, expected] : cases) {
        Stream& changed = stream(which);
        changed.expression = expression;
        const double before = changed.withExpression(2).value.one_d;
        EXPECT_EQ(before, changed.at(2).value.one_d) << "not switched on yet";
        changed.isExpressionEnabled = true;
        EXPECT_EQ(changed.withExpression(2).value.one_d, expected) << which;
        changed.isExpressionEnabled = false;
    }
}

void expectAt(const Layer& layer, const double (&from)[3], const double (&to)[3]) {
    const auto& [world] = layer.toWorld(0);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(from[0] * world[0][i] + from[1] * world[1][i] + from[2] * world[2][i] +
                        world[3][i],
                    to[i], 1e-9);
}

TEST_F(Scene, LayerTransformsFollowTheirStreams) {
    expectAt(layer, {20, 10, 0}, {180, 100, 0}); // both centres
    stream(AEGP_LayerStream_ANCHORPOINT).constant = number(10, 20);
    stream(AEGP_LayerStream_POSITION).constant = number(100, 50, 5);
    stream(AEGP_LayerStream_SCALE).constant = number(200, 50, 100);
    stream(AEGP_LayerStream_ROTATION).constant = number(90);
    expectAt(layer, {13, 24, 0}, {98, 56, 5}); // 3, 4; then 6, 2; then -2, 6
    Layer& camera = comp.addCamera("camera", 500);
    camera.stream(AEGP_LayerStream_ROTATE_Y)->constant = number(90);
    expectAt(camera, {0, 0, 10}, {190, 100, -500});
    camera.parent = &layer; // minus its anchor point 170, 80; then 340, 40; then -40, 340
    expectAt(camera, {0, 0, 0}, {60, 390, -495});
    stream(AEGP_LayerStream_ROTATE_X).constant = number(90);
    stream(AEGP_LayerStream_ORIENTATION).constant = number(0, 90, 0);
    expectAt(layer, {13, 24, 0}, {106, 50, 7}); // -2, 6, 0; then -2, 0, 6; then 6, 0, 2
    camera.inSeconds = 2;
    for (const auto& [time, active] : {std::pair{1.9, false}, {2.0, true}, {12.0, false}})
        EXPECT_EQ(comp.activeCamera(time), active ? &camera : nullptr);
}

TEST_F(Scene, MisuseIsAFaultThatNamesTheCall) {
    const AEGP_StreamRefH gone = acquire(AEGP_LayerStream_OPACITY);
    EXPECT_EQ(streams.AEGP_DisposeStream(gone), 0);
    const AEGP_StreamRefH opacity = acquire(AEGP_LayerStream_OPACITY);
    const auto dead = reinterpret_cast<AEGP_LayerH>(&comp.addCamera("", 1));
    comp.layers.pop_back();
    const A_Time noScale{1, 0};
    AEGP_StreamValue2 value = ask(streams.AEGP_GetNewStreamValue, plugin, opacity, 1, &comp.now, 0);
    A_long index = 0;
    A_Boolean isSet = 0;
    AEGP_MemHandle memory = nullptr;
    const std::pair<const char*, std::function<A_Err()>> cases[] = {
        {"AEGP_GetStreamType", [&] { return streams.AEGP_GetStreamType(gone, &index); }},
        {"AEGP_GetStreamType", [&] { return streams.AEGP_GetStreamType(opacity, nullptr); }},
        {"AEGP_DisposeStream", [&] { return streams.AEGP_DisposeStream(gone); }},
        {"AEGP_InsertKeyframe",
         [&] { return keys.AEGP_InsertKeyframe(opacity, 1, &noScale, &index); }},
        {"AEGP_GetLayerID", [&] { return layers.AEGP_GetLayerID(dead, &index); }},
        // A value of the stream is not disposed of.
        {"AEGP_DisposeStream", [&] { return streams.AEGP_DisposeStream(opacity); }},
        {"AEGP_GetExpressionState: no plug-in",
         [&] { return streams.AEGP_GetExpressionState(0, opacity, &isSet); }},
        {"AEGP_NewMemHandle: no plug-in",
         [&] { return memorySuite().AEGP_NewMemHandle(2, "m", 1, 0, &memory); }},
        {"AEGP_GetLayerID: AEGP Layer Suite 12 is not acquired",
         [&] {
             acquired.reset();
             return layers.AEGP_GetLayerID(layerH, &index);
         }},
    };
    for (const auto& [call, misuse] : cases) {
        EXPECT_NE(misuse(), 0) << call;
        const std::vector<std::string> faults = ledger::takeFaults();
        ASSERT_EQ(faults.size(), 1U) << call;
        EXPECT_NE(faults[0].find(call), std::string::npos) << faults[0];
    }
    acquired.emplace();
    EXPECT_NE(streams.AEGP_DisposeStream(nullptr), 0); // an error, but no fault of the module
    EXPECT_EQ(streams.AEGP_DisposeStreamValue(&value), 0);
}

} // namespace
