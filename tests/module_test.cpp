// The module as a host loads it: its exports and resource, commands without an instance, dialogs,
// and nested commands.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/command_stack.h"
#include "hostkit/module/library.h"
#include "platform/win32.h"
#include "tests/modules/recording_resource.h"
#include "tests/support/debug_output.h"
#include "tests/support/host_context.h"
#include "tests/support/module_fixture.h"

using namespace hostkit;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

const std::string copyKernel = kernelText("", "dst = sampleNearest(src, outCoord());");

std::string sized(const std::string& text) {
    return static_cast<char>(text.size()) + text;
}

EntryPoint moduleEntry() {
    return reinterpret_cast<EntryPoint>(
        library::functionIn(library::loaded(TVM_MODULE_PATH), "EntryPointFunc"));
}

} // namespace

TEST_F(ModuleTest, ExportsOneFunctionAndMatchesItsResource) {
#ifdef _WIN32 // checked on the build machine: scripts/check_dll.py
    const auto module = static_cast<HMODULE>(library::loaded(TVM_MODULE_PATH));
    HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(16000), L"PIPL");
    ASSERT_NE(resource, nullptr);
    EXPECT_EQ(std::string(static_cast<const char*>(LockResource(LoadResource(module, resource))),
                          SizeofResource(module, resource)),
              bytesOf(std::filesystem::path(TVM_MODULE_PATH).replace_extension(".pipl")));
#else
    const char* symbols = "test \"$(nm -D --defined-only '" TVM_MODULE_PATH
                          "' | cut -d' ' -f2-)\" = 'T EntryPointFunc'";
    EXPECT_EQ(std::system(symbols), 0) << symbols;
#endif
    EXPECT_THAT(host.registeredPlugins, ElementsAre("Tvelmarondine"));
    EXPECT_EQ(plugin->pipl().id, 16000);
    std::vector<std::pair<std::string, std::string>> properties;
    for (const PiplProperty& property : plugin->pipl().properties) {
        EXPECT_EQ(property.vendor, "8BIM");
        properties.emplace_back(property.key, property.data);
    }
    using Entry = std::pair<std::string, std::string>;
    EXPECT_THAT(
        properties,
        ElementsAre(Entry("kind", "eFKT"), Entry("name", sized("Tvelmarondine")),
                    Entry("catg", sized("HOLMVARDEN")), Entry("wx86", sized("EntryPointFunc")),
                    Entry("ePVR", number(2 << 16)), Entry("eSVR", number(12 << 16 | 14)),
                    Entry("eVER", number(0x80001)), Entry("eINF", number(0)),
                    Entry("eGLO", number(0x6000031)), Entry("eGL2", number(0x1400)),
                    Entry("eMNA", sized("HOLMVARDEN_Tvelmarondine")), Entry("aeFL", number(0))));
}

TEST_F(ModuleTest, CommandsWithoutWorkSucceed) {
    for (const PF_Cmd command :
         {2, 10, 12, 13, 15, 16, 17, 18, 19, 20, 21, 22, 25, 1000, -1, INT32_MAX}) {
        calls::reset();
        EXPECT_EQ(plugin->send(command), 0) << command;
        EXPECT_EQ(calls::count(), 3U) << command; // a handle is allocated, locked, disposed of
    }
    Plugin other(TVM_MODULE_PATH);
    EXPECT_EQ(other.send(PF_Cmd_GLOBAL_SETDOWN), 0); // without global setup
}

// The host renders with smart rendering; PF_Cmd_RENDER leaves the output unchanged.
TEST_F(ModuleTest, TheOlderRenderCommandDrawsNothing) {
    Effect& effect = applyKernel(addPicture(), copyKernel);
    World painted = makeOutput(4, 4, 1);
    std::ranges::fill(painted.data, std::byte{0x5A});
    const std::vector<std::byte> before = painted.data;
    RenderResult result;
    EXPECT_EQ(debugOutputOf([&] { result = effect.renderPlain({}, std::move(painted)); }),
              "Entry Render\n");
    EXPECT_EQ(result.error, 0);
    EXPECT_EQ(result.output.data, before);
}

TEST_F(ModuleTest, DeletesItsGraphsInItsOwnContext) {
    applyKernel(addPicture(), copyKernel);
    applyKernel(addPicture(), kernelText("", "dst = float4(1.0);"));
    const HostContext own(hostKinds().back());
    glewInit(); // the module has loaded its own functions only
    std::vector<GLuint> textures(64);
    glGenTextures(64, textures.data());
    std::vector<GLuint> programs;
    for (const GLuint texture : textures) {
        glBindTexture(GL_TEXTURE_2D, texture);
        programs.push_back(glCreateProgram());
    }
    while (!comp.layers.empty()) // setdown of an effect still reads the list of layers
        comp.layers.pop_back();
    EXPECT_EQ(plugin->setDown(), 0);
    EXPECT_EQ(currentContext(), own.all);
    for (const GLuint texture : textures)
        EXPECT_TRUE(glIsTexture(texture));
    for (const GLuint program : programs)
        EXPECT_TRUE(glIsProgram(program)); // names are the same in every context
}

TEST_F(ModuleTest, RejectsInvalidRecords) {
    const EntryPoint entry = moduleEntry();
    PF_OutData out{};
    EXPECT_EQ(entry(PF_Cmd_GLOBAL_SETUP, nullptr, &out, nullptr, nullptr, nullptr), 516);
    PF_InData in = *host.inData();
    EXPECT_EQ(entry(PF_Cmd_GLOBAL_SETUP, &in, nullptr, nullptr, nullptr, nullptr), 516);
    // Without global setup.
    EXPECT_EQ(entry(PF_Cmd_ABOUT, &in, &out, nullptr, nullptr, nullptr), 512);
    in.global_data = plugin->globalData();
    in.pica_basicP = nullptr;
    EXPECT_EQ(entry(PF_Cmd_ABOUT, &in, nullptr, nullptr, nullptr, nullptr), 516);
}

#ifdef __i386__ // other systems align the stack to 16 bytes before each call

// Calls the entry with the stack pointer that many bytes below a multiple of 16.
[[gnu::naked]] PF_Err callBelow(int, EntryPoint, PF_Cmd, PF_InData*, PF_OutData*, PF_ParamDef**,
                                PF_LayerDef*, void*) {
    asm("pushl %ebp\n"
        "movl %esp, %ebp\n"
        "andl $-16, %esp\n"
        "subl 8(%ebp), %esp\n"
        "pushl 36(%ebp)\n"
        "pushl 32(%ebp)\n"
        "pushl 28(%ebp)\n"
        "pushl 24(%ebp)\n"
        "pushl 20(%ebp)\n"
        "pushl 16(%ebp)\n"
        "call *12(%ebp)\n"
        "leave\n"
        "ret\n");
}

TEST_F(ModuleTest, AcceptsAStackThatIsAlignedToFourBytes) {
    for (int bytes = 0; bytes < 16; bytes += 4) {
        PF_InData in = *host.inData();
        PF_OutData out{};
        const auto send = [&](PF_Cmd command) {
            const ActiveCommand active(command, in);
            return callBelow(bytes, moduleEntry(), command, &in, &out, nullptr, nullptr, nullptr);
        };
        EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
        in.global_data = out.global_data;
        EXPECT_EQ(send(PF_Cmd_ABOUT), 0);
        EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
    }
}

#endif

TEST_F(ModuleTest, TextsReachTheDialogUnchanged) {
    const std::string odd = "a \\ ' ? \t \xC3\xA9 \xF0\x9F\x8E\xA8\n); alert('no'); //";
    const std::string head = "Pixel Bender Kernel : Test\nversion : 1\nVendor : v\n\n";
    const std::string filler(254 - head.size() - odd.size(), 'x');
    // Byte 255 is the first of a two-byte character.
    applyKernel(addPicture(), kernelText("", "dst = sampleNearest(src, outCoord());",
                                         "description: \"" + odd + filler + "\xC3\xA9 more\"; "));
    host.scripts.clear();
    comp.layers.front()->effects.front()->doDialog();
    ASSERT_EQ(host.scripts.asked().size(), 1U);
    EXPECT_EQ(host.scripts.asked()[0].title, "Pixel Bender Information");
    EXPECT_FALSE(host.scripts.asked()[0].flag);
    EXPECT_EQ(host.scripts.asked()[0].message, head + odd + filler);

    const std::string name = "/x\");alert(\"gotcha.pbk";
    Layer& layer = addPicture();
    layer.addMarker(0, "/nowhere" + name);
    addEffect(layer).apply();
    host.scripts.clear();
    layer.effects.front()->doDialog();
    ASSERT_EQ(host.scripts.asked().size(), 1U);
    EXPECT_EQ(host.scripts.asked()[0].kind, Question::Kind::OpenFile);
    EXPECT_EQ(host.scripts.asked()[0].message, "Where is " + name + "?");
}

TEST_F(ModuleTest, AboutShowsTheVersionsAndExportsTheErrorLog) {
    EXPECT_EQ(plugin->about(), 0);
    ASSERT_EQ(host.infoPanel.messages().size(), 2U);
    const InfoPanel::Lines versions = host.infoPanel.messages()[0];
    ASSERT_EQ(versions.size(), 3U);
    std::array<std::string, 3> texts;
    const std::array labels = {"OpenGL vendor  : ", "OpenGL version : ", "GLSL   version : "};
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_THAT(versions[i], StartsWith(labels[i]));
        texts[i] = versions[i].substr(std::string(labels[i]).size());
        EXPECT_NE(texts[i], "");
    }
    const auto noLog = ElementsAre(texts[1], texts[2], "No error log");
    EXPECT_THAT(host.infoPanel.messages()[1], noLog);
    EXPECT_THAT(host.scripts.asked(), IsEmpty()); // nothing to export

    host.scripts.answers = {write("bad.pbk", kernelText("", "dst = nowhere;")), std::nullopt};
    EXPECT_EQ(addEffect(addPicture()).apply(), 0);
    using Dialog = std::tuple<Question::Kind, std::string, std::string, bool>;
    using Kind = Question::Kind;
    const Dialog offer = {Kind::Confirm, "Tvelmarondine",
                          "Tvelmarondine has error log.\nDo you export this?", true};
    const Dialog where = {Kind::Alert, "TVM exports log", "Please select where export log", false};
    const Dialog chooser = {Kind::SelectFolder, "", "Select where export log", false};
    const Dialog failed = {Kind::Alert, "Log file has failed to export",
                           "Log file has failed to export.\nTry other folder.", false};
    const Dialog done = {Kind::Alert, "Log file has exported ",
                         "Log file has been exported. (Tvelmarondine_log.txt) \nPlease send it, "
                         "with the Pixel Bender file, to support@holmvarden.example",
                         false};
    const auto dialogs = [&](std::deque<std::optional<std::string>> answers) {
        host.scripts.clear();
        host.scripts.answers = std::move(answers);
        EXPECT_EQ(plugin->about(), 0);
        std::vector<Dialog> all;
        for (const Question& asked : host.scripts.asked())
            all.emplace_back(asked.kind, asked.title, asked.message, asked.flag);
        return all;
    };
    EXPECT_THAT(dialogs({std::nullopt}), ElementsAre(offer));
    EXPECT_THAT(host.infoPanel.messages().back(), noLog); // declined
    EXPECT_THAT(dialogs({"yes", std::nullopt}), ElementsAre(offer, where, chooser));
    EXPECT_THAT(dialogs({"yes", "/nowhere"}), ElementsAre(offer, where, chooser, failed));
    const auto exported = folder / "Tvelmarondine_error_log.txt";
    std::ofstream(exported) << std::string(5000, 'o'); // exported before
    EXPECT_THAT(dialogs({"yes", folder.string()}), ElementsAre(offer, where, chooser, done));
    const std::string text = bytesOf(exported);
    EXPECT_THAT(text, StartsWith("Win32bit\nvendor : " + texts[0] + "\nversion : " + texts[1] +
                                 "\nglsl : " + texts[2] + "\nTest(v)\n"));
    EXPECT_THAT(text.substr(text.find("Test(f)\n")), HasSubstr("nowhere"));
    EXPECT_EQ(text.find(std::string(10, 'o')), std::string::npos);
    EXPECT_THAT(dialogs({}), IsEmpty());
}

// Two instances of one kernel; each multiplies and adds by its own controls.
TEST_F(ModuleTest, NestedCommandsAreIndependent) {
    const std::string path = write(
        "scale.pbk", kernelText("parameter float gain; parameter float lift;",
                                "dst = sampleNearest(src, outCoord()) * gain + float4(lift);"));
    Layer& layer = addPicture(4, 4, 4);
    Effect& outer = apply(layer, path);
    Effect& inner = apply(layer, path);
    const auto expectRender = [&](Effect& effect, float gain, float lift) {
        effect.control(44).constant.value.one_d = gain;
        effect.control(45).constant.value.one_d = lift;
        const RenderResult result = effect.render({});
        EXPECT_EQ(result.error, 0);
        for (int at = 0; at < 16 && result.error == 0; ++at)
            for (std::size_t k = 0; k < 4; ++k)
                EXPECT_NEAR(pixelAt(result.output, at % 4, at / 4)[k],
                            pixelAt(layer.source->pixels, at % 4, at / 4)[k] * gain + lift, 1e-6);
    };
    bool hasRun = false;
    const auto event = [&] {
        expectRender(inner, 0.25F, 0.5F);
        EXPECT_EQ(inner.doDialog() | inner.updateParamsUi() | plugin->about(), 0);
        hasRun = true;
    };
    for (const char* call : {"host_new_handle", "checkout_layer", "checkout_layer_pixels",
                             "checkout_output", "checkout_param", "checkin_param"})
        for (int nth = 1; nth <= 3; ++nth) {
            SCOPED_TRACE(call + std::to_string(nth));
            hasRun = false;
            std::function<void()> hook = event;
            for (int i = 1; i < nth; ++i)
                hook = [call, hook] { calls::onNext(call, hook); };
            calls::onNext(call, hook);
            expectRender(outer, 2, -0.5F);
            calls::reset();
        }
    for (const char* call : {"AcquireSuite", "PF_UpdateParamUI", "AEGP_SetDynamicStreamFlag"}) {
        hasRun = false;
        outer.save();
        calls::onNext(call, event);
        EXPECT_EQ(outer.updateParamsUi(), 0);
        EXPECT_TRUE(hasRun) << call;
    }
    EXPECT_EQ(outer.control(46).isHidden(), true);
    EXPECT_EQ(outer.control(45).isHidden(), false);
    hasRun = false;
    calls::onNext("PF_InfoDrawText", event); // sent after the new kernel was loaded
    applyKernel(layer, copyKernel);
    EXPECT_TRUE(hasRun);
    layer.effects.clear();
}
