// The effect's controls: the fixed list, the assignment of a kernel's parameters, their names,
// ranges and defaults, and the values that the kernel reads.

#include <algorithm>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "hostkit/calls/calls.h"
#include "hostkit/project/undo.h"
#include "hostkit/suites/basic_suite.h"
#include "hostkit/suites/tables.h"
#include "tests/support/module_fixture.h"

using namespace hostkit;

namespace {

// "float p <metadata>", with single quotes for readability.
std::string parameter(std::string declaration) {
    std::replace(declaration.begin(), declaration.end(), '\'', '"');
    return "parameter " + declaration + ";\n";
}

std::string parameters(int count, const std::string& type, const std::string& metadata = "") {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += parameter(type + " " + type + "_" + std::to_string(i) + metadata);
    return all;
}

// "name flags: the numbers in the order of the record, and the text". Fixed-point numbers are
// converted.
std::string describe(const PF_ParamDef& definition) {
    std::ostringstream line;
    const auto list = [&](auto... all) { ((line << ' ' << +all), ...); };
    const auto fixed = [&](auto... all) { ((line << ' ' << all / 65536.0), ...); };
    const PF_ParamDefUnion& u = definition.u;
    line << definition.name << ' ' << definition.flags << ':';
    switch (definition.param_type) {
    case PF_Param_LAYER:
        list(u.ld.dephault);
        break;
    case PF_Param_CHECKBOX:
        list(u.bd.value, u.bd.dephault);
        line << u.bd.u.nameptr;
        break;
    case PF_Param_POPUP:
        list(u.pd.value, u.pd.num_choices, u.pd.dephault);
        line << ' ' << u.pd.u.namesptr;
        break;
    case PF_Param_SLIDER:
        list(u.sd.value, u.sd.dephault, u.sd.valid_min, u.sd.valid_max, u.sd.slider_min,
             u.sd.slider_max);
        break;
    case PF_Param_FIX_SLIDER:
        fixed(u.fs_d.value, u.fs_d.dephault, u.fs_d.valid_min, u.fs_d.valid_max, u.fs_d.slider_min,
              u.fs_d.slider_max);
        list(u.fs_d.precision, u.fs_d.display_flags);
        break;
    case PF_Param_POINT:
        fixed(u.td.x_value, u.td.y_value, u.td.x_dephault, u.td.y_dephault);
        list(u.td.restrict_bounds);
        break;
    case PF_Param_ANGLE:
        fixed(u.ad.value, u.ad.dephault, u.ad.valid_min, u.ad.valid_max);
        break;
    case PF_Param_COLOR:
        for (const PF_Pixel& color : {u.cd.value, u.cd.dephault})
            list(color.alpha, color.red, color.green, color.blue);
        break;
    default:
        line << " of an unknown kind";
    }
    return line.str();
}

// The visible controls, as "4-6 24".
std::string visible(Effect& effect) {
    std::string runs;
    const auto isShown = [&](std::size_t i) {
        return i > 0 && i < effect.definitions.size() && !effect.control(i).isHidden();
    };
    for (std::size_t i = 1; i < effect.definitions.size(); ++i) {
        if (isShown(i) && !isShown(i - 1))
            runs += (runs.empty() ? "" : " ") + std::to_string(i);
        if (isShown(i) && isShown(i - 1) && !isShown(i + 1))
            runs += "-" + std::to_string(i);
    }
    return runs;
}

AEGP_StreamVal2 number(double value) {
    return {.one_d = value};
}

AEGP_StreamVal2 point(double x, double y) {
    return {.two_d = {x, y}};
}

using Values = std::vector<std::pair<std::size_t, AEGP_StreamVal2>>; // by control index

class EffectControls : public ModuleTest {
protected:
    Effect& applyWith(const std::string& declarations) {
        return applyKernel(layer,
                           kernelText(declarations, "dst = sampleNearest(src, outCoord());"));
    }
    // Checks which controls are visible for a kernel with these parameters, and the names of some
    // of them.
    void expectControls(const std::string& declarations, const std::string& controls,
                        const std::vector<std::pair<std::size_t, std::string>>& names) {
        SCOPED_TRACE(declarations);
        Effect& effect = applyWith(declarations);
        EXPECT_EQ(visible(effect), controls);
        for (const auto& [index, name] : names)
            EXPECT_EQ(effect.definitions[index].name, name) << index;
    }
    void expectRead(const std::string& declarations, const std::string& result,
                    const Values& values, const Pixel& expected);

    Layer& layer = addPicture(200, 100);
    Layer* small[3] = {&addPicture(3, 2, 1), &addPicture(3, 2, 2), &addPicture(3, 2, 4)};
};

// Renders a kernel with this result at every depth, with these control values, and checks the
// pixel.
void EffectControls::expectRead(const std::string& declarations, const std::string& result,
                                const Values& values, const Pixel& expected) {
    for (Layer* place : small) {
        const int depth = host.project.componentBytes = place->source->pixels.componentBytes;
        SCOPED_TRACE(result + " of " + declarations + " at depth " + std::to_string(depth));
        Effect& effect = applyKernel(*place, kernelText(declarations, "dst = " + result + ";"));
        for (const auto& [index, value] : values)
            effect.control(index).set({value, {}}, 0);
        const RenderResult frame = effect.render({});
        ASSERT_EQ(frame.error, 0);
        for (std::size_t k = 0; k < 4; ++k) {
            const float stored = depth == 4 ? expected[k] : std::clamp(expected[k], 0.F, 1.F);
            const double error = depth == 4 ? 1e-5 : depth == 2 ? 1.01 / 32768 : 0.51 / 255;
            EXPECT_NEAR(pixelAt(frame.output, 2, 1)[k], stored, error) << k;
        }
    }
}

} // namespace

TEST_F(EffectControls, AreOneFixedListBeforeAnyKernel) {
    std::string choices = "0";
    for (int i = 1; i < 32; ++i)
        choices += "|" + std::to_string(i);
    const std::tuple<std::size_t, std::size_t, PF_ParamType, std::string> rows[] = {
        // first, last, kind, description
        {1, 3, PF_Param_LAYER, "layer2 0: 0"},
        {4, 23, PF_Param_CHECKBOX, "checkbox 0: 0 0"},
        {24, 33, PF_Param_POPUP, "popup 0: 1 32 1 " + choices},
        {34, 43, PF_Param_SLIDER, "slider 0: 0 0 -32767 32767 -254 254"},
        {44, 93, PF_Param_FIX_SLIDER, "fixed 0: 0 0 -32767 32767 -254 254 1 0"},
        {94, 103, PF_Param_POINT, "point 0: 50 50 50 50 0"},
        {104, 113, PF_Param_ANGLE, "angle 32: 0 0 0 0"},
        {114, 123, PF_Param_COLOR, "color 0: 255 255 0 0 255 255 0 0"},
    };
    Effect& effect = addEffect(layer);
    for (int round = 0; round < 2; ++round) { // the host may request them again
        ASSERT_EQ(effect.setUpParameters(), 0);
        ASSERT_EQ(effect.definitions.size(), 124U);
        EXPECT_EQ(effect.optionsButton(), "PB Info");
        for (const auto& [first, last, type, description] : rows)
            for (std::size_t i = first; i <= last; ++i) {
                EXPECT_EQ(effect.definitions[i].uu.id, static_cast<A_long>(i));
                EXPECT_EQ(effect.definitions[i].param_type, type) << i;
                EXPECT_EQ(describe(effect.definitions[i]), description) << i;
            }
    }
}

TEST_F(EffectControls, AreAssignedInOrderByType) {
    expectControls("", "", {{1, "layer2"}, {44, "fixed"}});
    expectControls(parameter("float3 center"), "44-46", {{44, "center[0]"}, {46, "center[2]"}});
    expectControls(parameters(6, "float4") + parameters(2, "float"), "44-69",
                   {{67, "float4_5[3]"}, {68, "float_0"}, {69, "float_1"}});
    expectControls(parameters(12, "float4x4") + parameter("float2 v"), "44-93",
                   {{91, "float4x4_2[15]"}, {92, "v[0]"}, {93, "v[1]"}});
    expectControls(parameter("float p <aeUIControl: 'aePopup'; aePopupString: 'a|b';>"), "24", {});
    expectControls(parameters(11, "float4", " <aeUIControl: 'aeColor';>"), "114-123",
                   {{114, "float4_0"}, {123, "float4_9"}});
    expectControls(parameter("float2 p <parameterType: 'position';>") + parameter("float2 q"),
                   "44-45 94", {{94, "p"}, {44, "q[0]"}});
    // The aeUIControl hint takes precedence over parameterType, and each hint uses one control.
    expectControls(parameter("float4 p <parameterType: 'colorRGBA'; aeUIControl: 'aePoint';>") +
                       parameter("float3 a <aeUIControl: 'aeAngle';>") + parameter("float b"),
                   "44 94 104", {{94, "p"}, {104, "a"}, {44, "b"}});
    // Only two checkboxes are left, so the second "bool4" gets no controls but "bool2" does.
    expectControls(parameters(6, "bool3") + parameters(1, "bool4") + parameters(1, "bool2"), "4-23",
                   {{21, "bool3_5[2]"}, {22, "bool2_0[0]"}, {23, "bool2_0[1]"}});
    expectControls("input image4 a; input image4 b; input image4 c; input image4 d;", "1-3",
                   {{1, "a"}, {3, "c"}});
}

TEST_F(EffectControls, CutTheirNamesAtWholeCharacters) {
    const std::string label = "A label of 30 characters, long";
    const std::string wide = "\xE7\xB5\xB5\xE7\xB5\xB5\xE7\xB5\xB5"; // 3 times 3 bytes
    const std::string shown = "displayName: '" + label + "';";
    expectControls(parameter("float2 p <aeDisplayName: '" + label + "';>") +
                       parameter("float4x4 m <" + shown + ">") +
                       parameter("float q <" + shown + "aeDisplayName: 'Other';>") +
                       parameter("float2 w <displayName: '" + wide + wide + wide + wide + "';>"),
                   "44-64",
                   {{44, label.substr(0, 28) + "[0]"},
                    {45, label.substr(0, 28) + "[1]"},
                    {46, label.substr(0, 27) + "[0]"},
                    {61, label.substr(0, 27) + "[15]"},
                    {62, "Other"},
                    {63, wide + wide + wide + "[0]"}});
}

// The values are the defaults, written through the streams.
TEST_F(EffectControls, GetTheKernelsRangesAndDefaults) {
    const std::pair<const char*, const char*> rows[] = {
        // declaration (if new); control
        {"int a <aeUIControl: 'aePopup'; aePopupString: 'a|b|c'; maxValue: 2; defaultValue: 2;>",
         "24 a 0: 2 4 1 a|b|c"},
        {"int b <aeUIControl: 'aePopup'; aePopupString: 'x'; maxValue: 5; defaultValue: 9;>",
         "25 b 0: 6 6 1 x"},
        {"int c <parameterType: 'enum'; enumValues: 'x|y'; maxValue: 2; defaultValue: 0;>",
         "26 c 0: 1 3 1 x|y"},
        {"float d <aeUIControl: 'aeAngle'; defaultValue: -0.5; minValue: -90.0; maxValue: 720.0;>",
         "104 d 32: -0.5 -0.5 -90 720"},
        {"float e <parameterType: 'angleDegrees'; defaultValue: 45.0;>", "105 e 32: 45 45 0 0"},
        {"float f <defaultValue: 0.00001; minValue: -40000.0; maxValue: 40000.0;>",
         "44 f 32: 1.52588e-05 1.52588e-05 -32767 32767 -32767 32767 1 0"},
        {"float g <>", "45 g 32: 0 0 0 0 0 0 1 0"},
        {"float h <parameterType: 'percentage'; defaultValue: 12.5; maxValue: 40000.0;>",
         "46 h 32: 12.5 12.5 0 32768 0 32768 1 1"},
        {"float2 i <parameterType: 'percentage'; defaultValue: float2(1.0, 2.0); minValue: "
         "float2(-1.0, -2.0); maxValue: float2(10.0, 20.0);>",
         "47 i[0] 32: 1 1 -1 10 -1 10 1 1"},
        {"", "48 i[1] 32: 2 2 -2 20 -2 20 1 1"},
        {"float j <aeUIControl: 'aePercentSlider'; defaultValue: 85.0; maxValue: 100.0;>",
         "49 j 32: 85 85 0 100 0 100 1 1"},
        {"float k <aeUIControl: 'aeOneChannelColor'; minValue: -1.0; maxValue: 1.0;>",
         "50 k 32: 0 0 -1 1 -1 1 1 2"},
        {"int2 l <defaultValue: int2(3, -4); minValue: int2(-10, -20); maxValue: int2(10, "
         "100000);>",
         "34 l[0] 32: 3 3 -10 10 -10 10"},
        {"", "35 l[1] 32: -4 -4 -20 100000 -20 100000"},
        {"bool2 m <defaultValue: bool2(false, true);>", "4 m[0] 0: 0 0"},
        {"", "5 m[1] 0: 1 1"},
        {"float2 n <parameterType: 'position'; defaultValue: float2(50.0, 25.0);>",
         "94 n 0: 50 25 25 25 0"},
        {"float2 o <aeUIControl: 'aePoint'; aePointRelativeDefaultValue: float2(0.5, -0.25);>",
         "95 o 0: 100 -25 50 -25 0"},
        {"float2 p <aeUIControl: 'aePoint'; defaultValue: float2(-1.0, 100.0);>",
         "96 p 0: -1 100 -0.5 100 0"},
        {"float4 q <aeUIControl: 'aeColor'; defaultValue: float4(1.0, 0.5, 0.0, 1.0);>",
         "114 q 0: 255 255 128 0 255 255 127 0"},
        {"float3 r <parameterType: 'colorRGB'; defaultValue: float3(0.0, 1.0, 0.25);>",
         "115 r 0: 255 0 255 64 0 0 255 63"},
        {"float4 s <parameterType: 'colorRGBA'; defaultValue: float4(0.2, 0.4, 0.6, 0.8);>",
         "116 s 0: 204 51 102 153 204 51 102 153"},
        {"float3 t <parameterType: 'colorRGB'; aeUIControl: 'aeColor'; defaultValue: "
         "float3(1.0, 0.0, 0.0);>",
         "117 t 0: 255 255 0 0 0 255 0 0"},
    };
    std::string all;
    for (const auto& [declaration, control] : rows)
        all += *declaration == '\0' ? "" : parameter(declaration);
    Effect& effect = applyWith(all);
    EXPECT_EQ(visible(effect), "4-5 24-26 34-35 44-50 94-96 104-105 114-117");
    EXPECT_EQ(effect.title(), "TVM:Test");
    for (const auto& [declaration, control] : rows) {
        const std::size_t index = std::stoul(control);
        EXPECT_EQ(std::to_string(index) + " " + describe(effect.valueAt(index, 0)), control);
    }
}

TEST_F(EffectControls, AreConfiguredOnceAndUndoneInOneStep) {
    Effect& effect = applyWith("input image4 other; parameter float2 p < defaultValue: float2(1.0, "
                               "2.0); >;");
    ASSERT_EQ(host.project.undo->steps().size(), 3U); // title, visibility, defaults
    for (const UndoHistory::Step& step : host.project.undo->steps())
        EXPECT_EQ(step.name, "");
    calls::reset();
    EXPECT_EQ(effect.updateParamsUi(), 0);
    EXPECT_EQ(calls::count(), 3U); // each command makes three
    EXPECT_EQ(visible(effect), "1 44-45");
    EXPECT_TRUE(host.project.undo->undo());
    EXPECT_EQ(effect.valueAt(45, 0).u.fs_d.value, 0);
    EXPECT_TRUE(host.project.undo->undo());
    EXPECT_EQ(visible(effect), "1-123");
    EXPECT_EQ(effect.title(), "TVM:Test");
    EXPECT_TRUE(host.project.undo->undo());
    EXPECT_EQ(effect.title(), "Tvelmarondine");
}

TEST_F(EffectControls, AFailedUpdateIsReportedOnceAndHidesNothing) {
    host.scripts.answers = {write("k.pbk", kernelText("parameter float p; parameter float q;",
                                                      "dst = float4(p, q, 0.0, 1.0);"))};
    Effect& effect = addEffect(layer);
    calls::failAt("PF_UpdateParamUI", 1);
    EXPECT_EQ(effect.apply(), calls::injectedError);
    EXPECT_EQ(effect.title(), "TVM:Test");
    EXPECT_EQ(visible(effect), "1-123");
    calls::reset();
    EXPECT_EQ(effect.updateParamsUi(), 0);
    EXPECT_EQ(calls::count(), 3U); // each command makes three
}

// The definition of a popup contains the kernel's default as given.
TEST_F(EffectControls, KeepAPopupsDefaultInItsDefinition) {
    static std::vector<A_long> values;
    static const PF_ParamUtilsSuite1* real = nullptr;
    const PF_ParamUtilsSuite1 recorder = {
        [](PF_ProgPtr effect, A_long index, const PF_ParamDef* definition) {
            values.push_back(definition->u.pd.value);
            return real->PF_UpdateParamUI(effect, index, definition);
        }};
    real = &tables::paramUtilsSuite();
    suites::offer(recorder.name, recorder.version, &recorder);
    applyWith(
        parameter("int a <aeUIControl: 'aePopup'; aePopupString: 'a|b|c'; defaultValue: 9;>") +
        parameter("int b <parameterType: 'enum'; maxValue: 2; defaultValue: 2;>"));
    EXPECT_EQ(values, (std::vector<A_long>{9, 2}));
    suites::offer(real->name, real->version, real);
}

TEST_F(EffectControls, AreReadAsTheKernelExpects) {
    const auto with = [](const std::string& metadata) {
        return parameter("float p <" + metadata + ">");
    };
    const std::string popup =
        parameter("int p <aeUIControl: 'aePopup'; aePopupString: 'a|b|c'; maxValue: 2;>");
    const std::string choice = parameter("int p <parameterType: 'enum'; maxValue: 3;>");
    expectRead(popup, "float4(float(p) / 4.0)", {{24, number(1)}}, {0, 0, 0, 0});
    expectRead(popup, "float4(float(p) / 4.0)", {{24, number(4)}}, {.75F, .75F, .75F, .75F});
    expectRead(choice, "float4(float(p) / 4.0)", {{24, number(3)}}, {.5F, .5F, .5F, .5F});
    expectRead(with("aeUIControl: 'aeAngle';"), "float4(p / 800.0, -p, 0.5, 1.0)",
               {{104, number(400)}}, {.5F, -400, .5F, 1});
    expectRead(with("parameterType: 'angleDegrees';"), "float4(p / -800.0, 0.0, p, 1.0)",
               {{104, number(-400)}}, {.5F, 0, -400, 1});
    expectRead(with("aeUIControl: 'aePercentSlider';"), "float4(p / 100.0)", {{44, number(50)}},
               {.5F, .5F, .5F, .5F});
    expectRead(with("aeUIControl: 'aeOneChannelColor';"), "float4(p / 255.0)", {{44, number(51)}},
               {.2F, .2F, .2F, .2F});
    expectRead(parameter("float2 p <parameterType: 'percentage';>"), "float4(p / 100.0, 0.0, 1.0)",
               {{44, number(25)}, {45, number(75)}}, {.25F, .75F, 0, 1});
    const Values color = {{114, {.color = {.8, .2, .4, .6}}}};
    expectRead(parameter("float4 p <parameterType: 'colorRGBA';>"), "p", color,
               {.2F, .4F, .6F, .8F});
    expectRead(parameter("float3 p <aeUIControl: 'aeColor';>"), "float4(p, 1.0)", color,
               {.2F, .4F, .6F, 1});
    expectRead(parameter("float3 p <parameterType: 'colorRGB';>"), "float4(p, 1.0)", color,
               {.2F, .4F, .6F, 1});
    expectRead(parameters(2, "float2", " <aeUIControl: 'aePoint';>"), "float4(float2_0, float2_1)",
               {{94, point(.25, 3)}, {95, point(-1, .5)}}, {.25F, 3, -1, .5F});
    expectRead(parameter("bool3 p"), "float4(float(p[0]), float(p[1]), float(p[2]), 1.0)",
               {{4, number(1)}, {5, number(0)}, {6, number(1)}}, {1, 0, 1, 1});
    expectRead(parameter("int2 p"), "float4(float(p[0]), float(p[1]), 0.0, 8.0) / 8.0",
               {{34, number(3)}, {35, number(-4)}}, {.375F, -.5F, 0, 1});
    expectRead(parameter("float4x4 p"), "float4(p[0][0], p[0][1], p[1][0], p[3][2])",
               {{44, number(.1)}, {45, number(.2)}, {48, number(.3)}, {58, number(.4)}},
               {.1F, .2F, .3F, .4F});
    // The last parameter gets no control.
    expectRead(parameters(51, "float", " <defaultValue: 0.25;>"),
               "float4(float_50, float_49, float_0, 1.0)", {{93, number(.75)}, {44, number(.5)}},
               {.25F, .75F, .5F, 1});
}

// At every resolution, a kernel gets points in pixels of the full-size layer.
TEST_F(EffectControls, PointsAreInPixelsOfFullResolution) {
    Layer& place = addPicture(400, 40, 4);
    Effect& effect =
        applyKernel(place, kernelText(parameter("float2 p <parameterType: 'position';>") +
                                          parameter("float2 q <aeUIControl: 'aePoint';>"),
                                      "dst = float4(p, q);"));
    effect.control(94).set({point(100, 100), {}}, 0);
    effect.control(95).set({point(-3.5, 20.25), {}}, 0);
    for (const RenderRequest& request : {RenderRequest{}, RenderRequest{0, {1, 2}, {1, 2}, {}},
                                         RenderRequest{0, {1, 4}, {2, 3}, {}}}) {
        const RenderResult result = effect.render(request);
        ASSERT_EQ(result.error, 0);
        const Pixel seen = pixelAt(result.output, 5, 5);
        const Pixel expected = {100, 100, -3.5F, 20.25F};
        for (std::size_t k = 0; k < 4; ++k)
            EXPECT_NEAR(seen[k], expected[k], 1e-3) << k;
    }
}
