#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/effect/effect.h"
#include "hostkit/host.h"
#include "hostkit/module/library.h"
#include "hostkit/services/memory.h"
#include "sdk/pf_suites.h"
#include "tests/modules/recording_resource.h"

using namespace hostkit;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::filesystem::path writeResource(const std::string& bytes) {
    const auto path = std::filesystem::path(RECORDING_MODULE).replace_extension(".pipl");
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

template<class Channel>
Channel& channelAt(World& world, int x, int y, int channel) {
    return reinterpret_cast<Channel*>(world.data.data() + y * world.rowBytes)[4 * x + channel];
}

constexpr int width = 7;
constexpr int height = 4;

template<class Channel>
std::shared_ptr<Footage> footageOf() {
    World pixels = makeWorld(width, height, sizeof(Channel), 2);
    for (int i = 0; i < width * height * 4; ++i)
        channelAt<Channel>(pixels, i / 4 % width, i / 4 / width, i % 4) = i * i % 251;
    return makeFootage("footage", std::move(pixels));
}

// A host with a layer of 7 by 4 pixels and an effect on it. The test fails if anything stays
// acquired or an unexpected fault is recorded.
class HostkitEffect : public testing::Test {
protected:
    HostkitEffect() {
        writeResource(recordingResource());
        plugin.emplace(RECORDING_MODULE);
        module = reinterpret_cast<RecordingModule* (*)()>(
            library::functionIn(library::loaded(RECORDING_MODULE), "recordingModule"))();
        *module = RecordingModule();
        plugin->setUp();
        addEffect(*plugin, layer);
    }
    ~HostkitEffect() override {
        plugin.reset();
        EXPECT_EQ(memory::liveHandles(), 0u);
        EXPECT_THAT(ledger::outstanding(), IsEmpty());
        EXPECT_THAT(ledger::takeFaults(), IsEmpty());
        *module = RecordingModule();
    }
    Effect& effect() { return *layer.effects.front(); }

    Host host;
    Composition& comp = host.project.addComposition("comp", 20, 10);
    Layer& layer = comp.addLayer("layer", footageOf<std::uint8_t>());
    std::optional<Plugin> plugin;
    RecordingModule* module = nullptr;
};

} // namespace

TEST_F(HostkitEffect, SendsCommandsInTheHostsOrder) {
    module->error = 9;
    EXPECT_EQ(effect().apply(), 9); // stops at the first error
    module->handlers[PF_Cmd_SEQUENCE_SETUP] = [](const Sent& sent) {
        sent.out->out_flags |= PF_OutFlag_SEND_DO_DIALOG;
    };
    EXPECT_EQ(effect().apply(), 0);
    effect().control(2).constant.value.one_d = 7;
    effect().control(3).addKeyframe(1);
    Effect& copy = effect().duplicate();
    EXPECT_EQ(layer.effects.at(1).get(), &copy);
    EXPECT_EQ(copy.valueAt(2, 0).u.sd.value, 7);
    EXPECT_EQ(copy.control(3).keyframes.size(), 1u);
    const std::vector<std::byte> block = copy.save();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(block.data()), block.size()), "flat block");
    layer.effects.clear();
    EXPECT_THAT(module->commands, ElementsAre(1, 4, 4, 5, 9, 14, 7, 6, 4, 6, 14, 7, 6, 8, 8));
}

TEST_F(HostkitEffect, ChecksOutEachKindOfControlWithItsValue) {
    std::vector<PF_ParamDef> seen(recordingModuleControls);
    module->handlers[PF_Cmd_UPDATE_PARAMS_UI] = [&](const Sent& sent) {
        for (A_long i = 0; i < recordingModuleControls; ++i)
            EXPECT_EQ(sent.checkout(i, seen[i], 3) | sent.checkin(seen[i]), 0);
        sent.params[2]->u.sd = {5, 1, 2, 3, 4, 6};
        sent.with<PF_ParamUtilsSuite1>([&](const PF_ParamUtilsSuite1& suite) {
            EXPECT_EQ(suite.PF_UpdateParamUI(sent.in->effect_ref, 2, sent.params[2]), 0);
        });
    };
    layer.inSeconds = 1;
    ASSERT_EQ(effect().apply(), 0);
    EXPECT_EQ(seen[1].u.ld.reserved0, nullptr);
    EXPECT_EQ(seen[7].u.td.x_value, width << 15);    // 50 percent
    EXPECT_EQ(seen[7].u.td.y_value, height << 14);   // 25 percent
    EXPECT_EQ(effect().valueAt(2, 0).u.sd.value, 0); // an update of the controls sets no value
    EXPECT_EQ(effect().valueAt(2, 0).u.sd.slider_max, 4);

    Layer& other = comp.addLayer("other", footageOf<std::uint8_t>());
    const std::vector<std::pair<A_long, AEGP_StreamVal2>> values = {
        {1, {.layer_id = other.id}},       {2, {.one_d = 2.6}},
        {4, {.one_d = -2.5 / 65536}},      {5, {.one_d = 1}},
        {6, {.color = {0.5, 2, -1, 0.1}}}, {8, {.one_d = 9}}};
    for (const auto& [index, value] : values)
        effect().control(index).set({value, {}}, 0);
    effect().control(3).addKeyframe(0);
    effect().control(3).addKeyframe(6);
    effect().control(3).keyframes[1].value.value.one_d = 3;
    ASSERT_EQ(effect().updateParamsUi(), 0);
    EXPECT_EQ(seen[1].u.ld.reserved0, &other);
    EXPECT_EQ(seen[2].u.sd.value, 3);
    EXPECT_EQ(seen[3].u.fs_d.value, 3 << 15); // half way at 3 seconds of layer time
    EXPECT_EQ(effect().valueAt(3, 4).u.fs_d.value, 3 << 15);
    EXPECT_EQ(seen[4].u.ad.value, -3);
    EXPECT_EQ(seen[5].u.bd.value, 1);
    const PF_Pixel color = seen[6].u.cd.value;
    EXPECT_EQ(std::memcmp(&color, "\x80\xFF\x00\x1A", 4), 0);
    EXPECT_EQ(seen[8].u.pd.value, 3);
}

template<class Channel>
class HostkitFrames : public HostkitEffect {};
using Depths = testing::Types<std::uint8_t, std::uint16_t, float>;
TYPED_TEST_SUITE(HostkitFrames, Depths);

TYPED_TEST(HostkitFrames, AreTheMeanOfTheCoveredPixels) {
    this->host.project.componentBytes = sizeof(TypeParam);
    this->layer.source = footageOf<TypeParam>();
    World& source = this->layer.source->pixels;
    this->effect().apply();
    PF_ParamDef point{};
    PF_ParamDef layer{};
    const void* smaller = nullptr;
    PF_PixelFormat format = 0;
    this->module->handlers[PF_Cmd_SMART_RENDER] = [&](const Sent& sent) {
        EXPECT_EQ(sent.checkout(0, layer) | sent.checkin(layer), 0);
        smaller = static_cast<const std::byte*>(this->module->input.data) -
                  this->module->input.origin_x * 4 * sizeof(TypeParam);
        EXPECT_EQ(sent.checkout(7, point) | sent.checkin(point), 0);
        sent.with<PF_WorldSuite2>([&](const PF_WorldSuite2& suite) {
            EXPECT_EQ(suite.PF_GetPixelFormat(&this->module->input, &format), 0);
        });
    };
    EXPECT_EQ(this->effect().render({}).output.width, width);
    EXPECT_EQ(this->module->input.data, source.data.data()); // shared, not copied

    RenderResult result = this->effect().render({0, {1, 2}, {1, 3}, PF_LRect{1, 0, 9, 9}});
    ASSERT_EQ(result.output.width, 3); // of a frame of 4 by 2
    ASSERT_EQ(result.output.height, 2);
    EXPECT_EQ(layer.u.ld.data, smaller); // downsampled once in a frame
    EXPECT_EQ(point.u.td.x_value, width << 14);
    const PF_PixelFormat formats[] = {0x62677261, 0x36316561, 0, 0x32336561};
    EXPECT_EQ(format, formats[sizeof(TypeParam) - 1]);
    for (int i = 0; i < 3 * 2 * 4; ++i) {
        double sum = 0;
        int count = 0;
        for (int y = i / 12 * 3; y < std::min(i / 12 * 3 + 3, height); ++y)
            for (int x = i / 4 % 3 * 2 + 2; x < std::min(i / 4 % 3 * 2 + 4, width); ++x, ++count)
                sum += channelAt<TypeParam>(source, x, y, i % 4);
        EXPECT_NEAR((channelAt<TypeParam>(result.output, i / 4 % 3, i / 12, i % 4)), sum / count,
                    sizeof(TypeParam) == 4 ? 1e-4 : 0.5);
    }
    // Outside of the frame there is nothing to render.
    EXPECT_EQ(this->effect().render({0, {1, 1}, {1, 1}, PF_LRect{20, 0, 30, 9}}).output.width, 0);
}

TEST_F(HostkitEffect, EachMisuseIsAFaultThatNamesIt) {
    PF_ParamDef lost{};
    PF_ParamDef popup{{0}, PF_Param_POPUP, "popup", 0, {}};
    popup.u.pd = {1, 4, 1, {"a|b"}};
    PF_ParamDef textless = popup;
    textless.u.pd.u.namesptr = nullptr;
    PF_ParamDef unknown{{0}, 8, "unknown", 0, {}};
    PF_ParamDef endless{};
    std::memset(endless.name, 'x', sizeof endless.name);
    const auto update = [](A_long index) {
        return [index](const Sent& sent) {
            sent.with<PF_ParamUtilsSuite1>([&](const PF_ParamUtilsSuite1& suite) {
                PF_ParamDef slider{{0}, PF_Param_SLIDER, "slider", 0, {}};
                EXPECT_NE(suite.PF_UpdateParamUI(sent.in->effect_ref, index, &slider), 0);
            });
        };
    };
    const auto takeUnannounced = [](const Sent& sent) {
        PF_EffectWorld* world = nullptr;
        const auto& callbacks = *static_cast<PF_SmartRenderExtra*>(sent.extra)->cb;
        EXPECT_NE(callbacks.checkout_layer_pixels(sent.in->effect_ref, 5, &world), 0);
    };
    const auto askForeignFormat = [&](const Sent& sent) {
        sent.with<PF_WorldSuite2>([&](const PF_WorldSuite2& suite) {
            PF_EffectWorld own{nullptr, &lost, 4, 1, 1, {1, 1}, 0, 0, 0};
            PF_PixelFormat format = 0;
            EXPECT_NE(suite.PF_GetPixelFormat(&own, &format), 0);
        });
    };
    const auto setUp = PF_Cmd_PARAMS_SETUP;
    const auto dialog = PF_Cmd_DO_DIALOG;
    const std::tuple<PF_Cmd, const char*, RecordingModule::Handler> cases[] = {
        {dialog, "did not release: parameter", [&](auto& sent) { sent.checkout(2, lost); }},
        {dialog, "was not checked out", [&](auto& sent) { sent.checkin(lost); }},
        {dialog, "there is no control 99", [&](auto& sent) { sent.checkout(99, lost); }},
        {dialog, "add_param: not during", [&](auto& sent) { sent.add(-1, lost); }},
        {dialog, "PF_UpdateParamUI: not during", update(2)},
        {dialog, "the global data", [](auto& sent) { sent.out->global_data = nullptr; }},
        {dialog, "the sequence data", [](auto& sent) { sent.out->sequence_data = nullptr; }},
        {dialog, "cleared a flag", [](auto& sent) { sent.out->out_flags = 0; }},
#ifndef _WIN32 // exceptions cannot cross runtimes there
        {dialog, "threw an exception", [](auto&) { throw std::runtime_error("lost"); }},
#endif
        {setUp, "the index must be -1", [&](auto& sent) { sent.add(3, lost); }},
        {setUp, "fewer names", [&](auto& sent) { sent.add(-1, popup); }},
        {setUp, "no names of choices", [&](auto& sent) { sent.add(-1, textless); }},
        {setUp, "kind 8 is unknown", [&](auto& sent) { sent.add(-1, unknown); }},
        {setUp, "does not end", [&](auto& sent) { sent.add(-1, endless); }},
        {setUp, "announced 124", [](auto& sent) { sent.out->num_params = 124; }},
        {PF_Cmd_UPDATE_PARAMS_UI, "there is no control 0", update(0)},
        {PF_Cmd_UPDATE_PARAMS_UI, "of another kind", update(3)},
        {PF_Cmd_SMART_RENDER, "id 5 was not announced", takeUnannounced},
        {PF_Cmd_SMART_RENDER, "does not belong to the running command", askForeignFormat},
        {PF_Cmd_SEQUENCE_SETDOWN, "did not dispose of the sequence data",
         [](auto& sent) { sent.out->sequence_data = sent.in->utils->host_new_handle(1); }},
    };
    ASSERT_EQ(effect().apply(), 0);
    for (const auto& [command, fault, handler] : cases) {
        module->handlers = {{command, handler}};
        if (command == PF_Cmd_SMART_RENDER)
            effect().render({});
        else if (command == setUp)
            effect().setUpParameters();
        else if (command == PF_Cmd_SEQUENCE_SETDOWN)
            layer.effects.clear();
        else
            effect().send(command);
        EXPECT_THAT(ledger::takeFaults(), ElementsAre(HasSubstr(fault)));
    }
    module->handlers = {{PF_Cmd_GLOBAL_SETUP, [](auto& sent) { sent.out->out_flags2 ^= 1; }}};
    plugin->setDown();
    plugin->setUp();
    EXPECT_THAT(ledger::takeFaults(), ElementsAre(HasSubstr("eGL2")));
}

TEST_F(HostkitEffect, ChecksOutOnlyTheRequestedPart) {
    World& source = layer.source->pixels;
    channelAt<std::uint8_t>(source, 3, 2, 0) = 0; // a transparent pixel with colours
    layer.contents = PF_LRect{2, 1, 6, 4};
    effect().apply();
    for (const bool keepsHiddenRgb : {true, false}) {
        module->keepsHiddenRgb = keepsHiddenRgb;
        RenderResult result = effect().render({0, {1, 1}, {1, 1}, PF_LRect{1, 0, 5, 3}});
        const PF_EffectWorld& input = module->input;
        EXPECT_THAT((std::vector{input.origin_x, input.origin_y, input.width, input.height}),
                    ElementsAre(2, 1, 3, 2));
        EXPECT_THAT((std::vector{result.resultRect.left, result.maxResultRect.right}),
                    ElementsAre(2, 6));
        EXPECT_EQ(input.data == &source.data[source.rowBytes + 2 * 4], keepsHiddenRgb);
        for (int i = 0; i < 3 * 2 * 4; ++i) {
            const int x = i / 4 % 3 + 2, y = i / 12 + 1;
            const bool isLost = x == 3 && y == 2 && !keepsHiddenRgb;
            EXPECT_EQ(channelAt<std::uint8_t>(result.output, x - 2, y - 1, i % 4),
                      isLost ? 0 : channelAt<std::uint8_t>(source, x, y, i % 4));
        }
    }
    effect().render({0, {1, 2}, {1, 3}, {}}); // partly covered pixels belong to the contents
    EXPECT_THAT((std::vector{module->input.origin_x, module->input.origin_y, module->input.width,
                             module->input.height}),
                ElementsAre(1, 0, 2, 2));
}

TEST_F(HostkitEffect, SendsOnlyRequestedCommands) {
    module->handlers[PF_Cmd_GLOBAL_SETUP] = [](const Sent& sent) {
        sent.out->out_flags = sent.out->out_flags2 = 0;
    };
    plugin->setDown();
    plugin->setUp();
    EXPECT_EQ(ledger::takeFaults().size(), 2U); // they differ from the resource
    module->handlers[PF_Cmd_SEQUENCE_SETUP] = [](const Sent& sent) {
        sent.out->out_flags |= PF_OutFlag_SEND_DO_DIALOG;
    };
    module->handlers[PF_Cmd_RENDER] = [&](const Sent& sent) {
        EXPECT_EQ(sent.params[0]->u.ld.data, layer.source->pixels.data.data());
        EXPECT_THAT((std::vector{sent.output->width, sent.output->height}),
                    ElementsAre(width, height));
        static_cast<std::uint8_t*>(sent.output->data)[5] = 77;
    };
    module->commands.clear();
    EXPECT_EQ(effect().apply(), 0);
    EXPECT_EQ(effect().save().size(), 4U); // "live", unchanged
    RenderResult result = effect().render({});
    EXPECT_EQ(channelAt<std::uint8_t>(result.output, 1, 0, 1), 77);
    EXPECT_THAT(module->commands, ElementsAre(4, 5, 11));
    EXPECT_THROW(effect().doDialog(), std::logic_error);
    EXPECT_THROW(effect().updateParamsUi(), std::logic_error);
    EXPECT_THROW(effect().flattenSequence(), std::logic_error);
    host.project.componentBytes = 2;
    layer.source = footageOf<std::uint16_t>();
    EXPECT_THROW(effect().render({}), std::logic_error);
    host.project.componentBytes = 4;
    layer.source = footageOf<float>();
    EXPECT_THROW(effect().render({}), std::logic_error);
}

TEST_F(HostkitEffect, NestedCommandsHaveSeparateCheckouts) {
    ASSERT_EQ(effect().apply(), 0);
    PF_ParamDef checkedOut{};
    module->handlers[PF_Cmd_DO_DIALOG] = [&](const Sent& sent) {
        EXPECT_EQ(sent.checkout(2, checkedOut) | sent.checkin(checkedOut), 0);
    };
    module->handlers[PF_Cmd_UPDATE_PARAMS_UI] = [&](const Sent& sent) {
        EXPECT_NE(sent.checkin(checkedOut), 0); // the outer command checked it out
    };
    calls::onNext("checkin_param", [&] { EXPECT_EQ(effect().updateParamsUi(), 0); });
    EXPECT_EQ(effect().doDialog(), 0);
    EXPECT_THAT(ledger::takeFaults(), ElementsAre(HasSubstr("not checked out by this command")));
}

TEST(HostkitResource, MalformedFilesAreRejected) {
    const std::string good = recordingResource();
    const std::string start = "PIPL" + number(1);
    const std::string name = "8BIMname" + number(0);
    std::vector<std::string> bad = {
        good + '\0',
        "PIPX" + good.substr(4),
        start + number(~0u) + property("name", "\1x"),
        start + number(1) + name + number(~0u) + "xxxx", // longer than the file
        start + number(1) + name + number(1) + "xxxx",   // the padding is not 0
        start + number(2) + property("name", "") + property("name", "")};
    for (std::size_t length = 0; length < good.size(); ++length)
        bad.push_back(good.substr(0, length));
    for (const std::string& bytes : bad) {
        const auto path = writeResource(bytes);
        try {
            readPipl(path);
            ADD_FAILURE() << "read " << bytes.size() << " bytes of no resource";
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), HasSubstr(path.string()));
        }
    }
    EXPECT_EQ(readPipl(writeResource(good)).text("name"), "Recorder");
    writeResource(start + number(1) + property("wx86", "\5four"));
    EXPECT_THROW(Plugin{RECORDING_MODULE}, std::runtime_error);
    EXPECT_THROW(readPipl("/"), std::runtime_error);
}
