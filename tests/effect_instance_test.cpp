// An instance of the effect: how it finds its file, what a project stores of it, how it is
// reopened.
#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/calls/calls.h"
#include "hostkit/services/memory.h"
#include "tests/support/module_fixture.h"

using namespace hostkit;
using namespace std::string_literals;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using Block = std::vector<std::byte>;

const std::string invalid = "TVM:(Invalid PB)";
const std::string gainKernel =
    kernelText("parameter float gain <minValue: 0.0; maxValue: 4.0; defaultValue: 0.5;>;",
               "dst = sampleNearest(src, outCoord()) * gain;");

Block block(std::string_view bytes) {
    const auto* first = reinterpret_cast<const std::byte*>(bytes.data());
    return {first, first + bytes.size()};
}

// A flat block of version 1.
Block stored(const std::string& path, bool isPending) {
    return block("\1\0\0\0"s + (isPending ? '\1' : '\0') + "\0\0\0"s + path + '\0');
}

void setGain(Effect& effect, double gain) {
    effect.control(44).set({{.one_d = gain}, {}}, 0);
}

class EffectInstance : public ModuleTest {
protected:
    // Opens an instance of a project.
    Effect& open(const Block& flat, const std::function<void(Effect&)>& fillStreams = {}) {
        Effect& effect = addEffect(layer);
        EXPECT_EQ(effect.open(flat, fillStreams), 0);
        return effect;
    }
    std::vector<Question> questions() {
        const std::vector<Question> all = host.scripts.asked();
        host.scripts.clear();
        return all;
    }
    void expectGain(Effect& effect, double gain, double seconds = 0) {
        const RenderResult result = effect.render({seconds, {1, 1}, {1, 1}, {}});
        ASSERT_EQ(result.error, 0);
        for (int i = 0; i < 16; ++i)
            for (std::size_t k = 0; k < 4; ++k)
                EXPECT_NEAR(pixelAt(result.output, i % 4, i / 4)[k],
                            pixelAt(layer.source->pixels, i % 4, i / 4)[k] * gain, 1e-5);
    }

    Layer& layer = addPicture(4, 4, 4);
};

} // namespace

TEST_F(EffectInstance, TakesItsFileFromTheFirstMarker) {
    const std::pair<std::string, bool> cases[] = {
        {"/x.pbk", true},   {"/x.PBK", true}, {"/x.pbg", true},      {"/x.PBG", true},
        {"x.pbk", true},    {"xxpbk", true},  {"\xC3\xA9pbk", true}, {"xpbk", false},
        {"pbk", false},     {"", false},      {"/x.Pbk", false},     {"/x.pBG", false},
        {"/x.pbk ", false}, {"/x.pb", false}, {"pbk.txt", false},
    };
    for (const auto& [comment, isTaken] : cases) {
        SCOPED_TRACE(comment);
        host.infoPanel.clear();
        layer.addMarker(0, comment);
        Effect& effect = addEffect(layer);
        EXPECT_EQ(effect.apply(), 0);
        EXPECT_EQ((effect.outFlags & PF_OutFlag_SEND_DO_DIALOG) == 0, isTaken);
        EXPECT_EQ(effect.title(), invalid);
        const std::vector<Question> asked = questions();
        ASSERT_EQ(asked.size(), isTaken ? 0U : 1U);
        if (isTaken) {
            EXPECT_EQ(shown(),
                      (comment.back() == 'k' || comment.back() == 'K' ? "Kernel"s : "Graph"s) +
                          " file could not be opened:\n" + comment + "\n");
            continue;
        }
        EXPECT_EQ(asked[0].message, "Select Pixel Bender file");
        EXPECT_EQ(asked[0].filter, "pbk or pbg:*.pbk;*.pbg;");
    }
    layer.addMarker(0, write("\xE7\xB5\xB5/\xF0\x9F\x8E\xA8 \xC3\xA9.pbk", gainKernel));
    layer.addMarker(1, "/later.pbk");
    Effect& effect = addEffect(layer);
    EXPECT_EQ(effect.apply(), 0);
    EXPECT_EQ(effect.title(), "TVM:Test");
}

TEST_F(EffectInstance, TheFirstChosenFileSetsTheDefaults) {
    Effect& effect = addEffect(layer);
    ASSERT_EQ(effect.apply(), 0); // cancelled
    for (std::size_t i = 1; i < effect.definitions.size(); ++i)
        EXPECT_TRUE(effect.control(i).isHidden()) << i;
    EXPECT_EQ(effect.save(), stored("", true));
    questions();
    const auto choose = [&](const std::string& path) {
        host.scripts.answers = {path};
        EXPECT_EQ(effect.doDialog() | effect.updateParamsUi(), 0);
        return questions().back();
    };
    std::string inputs;
    for (int i = 1; i <= 8; ++i)
        inputs += "input image4 i" + std::to_string(i) + ";";
    const std::string tooMany =
        "<graph name='one&#10;two'><kernel><![CDATA[" + kernelText(inputs, "dst = float4(1.0);") +
        "]]></kernel><node id='a' name='Test'/><connect fromNode='a' fromOutput='dst' "
        "toImage='out'/></graph>";
    const std::string endsEarly = (folder / "short.pbk").string();
#ifndef _WIN32 // stat reports a size of a whole page for it, but it has fewer bytes
    std::filesystem::create_symlink("/sys/devices/system/cpu/online", endsEarly);
#endif
    const std::pair<std::string, std::string> refused[] = {
        {write("many.pbg", tooMany), "Too many inputs.\none\ntwo\n"}, // all three lines
        {"/nowhere.pbk", "Kernel file could not be opened:\n/nowhere.pbk\n"},
        {endsEarly, "Kernel file could not be opened:\n" + endsEarly + "\n"},
        {write("a.txt", gainKernel),
         "Unknown file extention:\n" + (folder / "a.txt").string() + "\n"},
        {write("a.pbk", kernelText(inputs, "dst = float4(1.0);")), "Too many inputs.\nTest\n"}};
    for (const auto& [file, message] : refused) {
        host.infoPanel.clear();
        choose(file);
        EXPECT_THAT(shown(), StartsWith(message));
        EXPECT_EQ(effect.title(), invalid) << file;
        EXPECT_EQ(effect.save(), stored("", true));
    }
    const std::string path = write("a.pbk", gainKernel); // nothing of a failed load is kept
    EXPECT_EQ(choose(path).message, "Select Pixel Bender file");
    EXPECT_EQ(effect.title(), "TVM:Test");
    EXPECT_FALSE(effect.control(44).isHidden());
    expectGain(effect, 0.5);
    EXPECT_EQ(effect.save(), stored(path, false));
    EXPECT_EQ(choose("unasked").title, "Pixel Bender Information"); // shows its information now
    EXPECT_EQ(effect.save(), stored(path, false));
}

TEST_F(EffectInstance, ReadsEveryFormOfTheFlatBlock) {
    const std::string path = "/gone/\xC3\xA9.pbk";
    const Block fresh = stored("", true);
    std::vector<std::pair<Block, Block>> cases = {
        // as read, as written again
        {stored(path, true), stored(path, true)},
        {stored(path, false), stored(path, false)},
        {block("\1\0\0\0\2\0\0\0"s + path + '\0'), stored(path, false)}, // bit 0 of the flags
        {block("\1\0\0\0\3\0\0\0"s + path + '\0'), stored(path, true)},
        {block("\1\0\0\0\0\xFF\xFF\xFF"s + path + "\0behind"s), stored(path, false)},
        {block("\0\0\0\0"s + path + '\0'), stored(path, false)},
        {block("\0\0\0\0\0"s), fresh},
        {block("\2\0\0\0\0\0\0\0"s + path + '\0'), fresh},
        {block("\0\0\0\1\0\0\0\0"s + path + '\0'), fresh},
    };
    for (std::size_t size = 0; size <= 8 + path.size(); ++size) { // truncated
        Block cut = stored(path, false);
        cut.resize(size);
        cases.emplace_back(cut, size < 5 ? fresh
                                         : stored(path.substr(0, size < 8 ? 0 : size - 8), false));
        cut = block("\0\0\0\0"s + path);
        cut.resize(std::min(size, cut.size()));
        const std::string rest = size < 4 ? "" : path.substr(0, size - 4);
        cases.emplace_back(cut, stored(rest, rest.empty()));
    }
    for (const auto& [found, written] : cases) {
        SCOPED_TRACE(testing::PrintToString(found));
        Effect& effect = open(found);
        EXPECT_EQ(effect.title(), invalid);
        EXPECT_EQ(effect.save(), written);
    }
    EXPECT_EQ(stored(path, true).size(), path.size() + 9);
    EXPECT_THAT(host.infoPanel.messages(), IsEmpty()); // a missing file is not reported again
}

TEST_F(EffectInstance, LiveAndFlatHandlesAreDistinguished) {
    const std::string path = write("a.pbk", gainKernel);
    Effect& effect = apply(layer, path);
    const PF_Handle live = effect.sequenceData;
    calls::reset();
    EXPECT_EQ(effect.resetUpSequence(), 0);
    EXPECT_EQ(effect.sequenceData, live);
    EXPECT_EQ(calls::count(), 3U); // each command makes three
    questions();

    // A block that is already flat is not flattened again.
    ASSERT_EQ(effect.flattenSequence(), 0);
    const PF_Handle flat = effect.sequenceData;
    EXPECT_NE(flat, live);
    EXPECT_EQ(effect.doDialog() | effect.updateParamsUi() | effect.render({}).error, 0);
    EXPECT_EQ(effect.sequenceData, flat);
    EXPECT_EQ(memory::contents(flat), stored(path, false));
    EXPECT_THAT(questions(), IsEmpty());
    memory::drop(flat);
    effect.sequenceData = memory::store(block("\0\0\0\0"s + path + '\0'));
    EXPECT_EQ(effect.flattenSequence(), 0);
    EXPECT_EQ(memory::contents(effect.sequenceData), stored(path, false));
    EXPECT_EQ(effect.setDownSequence(), 0);
    EXPECT_EQ(effect.sequenceData, nullptr);
    EXPECT_EQ(effect.flattenSequence() | effect.setDownSequence(), 0); // there is no sequence data
    EXPECT_EQ(effect.resetUpSequence(), 0);                            // creates sequence data
    EXPECT_EQ(effect.save(), stored("", true));
    EXPECT_EQ(effect.setUpSequence(), 0); // replaces it
}

TEST_F(EffectInstance, SearchesForAMovedFileUnderTheRootFolder) {
    const std::pair<std::vector<std::string>, bool> cases[] = {
        // files, whether the first is found
        {{"\xC3\xA9.pbk", "a/\xC3\xA9.pbk", "a/b/\xC3\xA9.pbk"}, true},
        {{"\xF0\xA0\x80\x80/\xC3\xA9.pbk", "a/b/y.pbk", "y.pbk"}, true},
        {{"a/b/\xC3\xA9.pbk", "\xC3\xA9.pbk.pbk"}, true},
        {{"a/b/c/\xC3\xA9.pbk"}, false},
        {{"\xC3\x89.pbk"}, false},
        {{"\xC3\xA9.PBK", "x\xC3\xA9.pbk"}, false},
        {{"\xC3\xA9.pbk/y.pbk"}, false},
    };
    host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", (folder / "none").string());
    EXPECT_EQ(open(stored("/gone/\xC3\xA9.pbk", false)).title(), invalid);
    for (const auto& row : cases) {
        const auto& [files, isFound] = row;
        SCOPED_TRACE(files[0]);
        const std::string root = "root" + std::to_string(&row - cases) + "/"; // ends in a separator
        for (const std::string& file : files)
            write(root + file, gainKernel);
        host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder",
                             (folder / root).make_preferred().string());
        Effect& effect = open(stored("/gone/\xC3\xA9.pbk", false));
        EXPECT_EQ(effect.title(), isFound ? "TVM:Test" : invalid);
        const Block saved = effect.save();
        const std::string path(reinterpret_cast<const char*>(saved.data()) + 8);
        if (isFound)
            EXPECT_TRUE(std::filesystem::equivalent(pathOf(path), folder / root / pathOf(files[0])))
                << path;
        else
            EXPECT_EQ(path, "/gone/\xC3\xA9.pbk");
    }
}

TEST_F(EffectInstance, AnExistingFileIsNotSearchedFor) {
    const std::string path = write("place/x.pbk", gainKernel);
    write("root/x.pbk", gainKernel);
    host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", (folder / "root").string());
    EXPECT_EQ(open(stored(path, false)).save(), stored(path, false));
}

TEST_F(EffectInstance, OneAnswerServesAllInstancesOfAFile) {
    const auto withGain = [](double gain) {
        return [=](Effect& effect) { setGain(effect, gain); };
    };
    Effect& first = open(stored("/gone/a/x.pbk", false), withGain(1.5));
    Effect& second = open(stored("/gone/a/x.pbk", false), withGain(2.5));
    Effect& other = open(stored("/gone/b/x.pbk", false), withGain(3.5));
    EXPECT_TRUE(second.control(44).isHidden());
    EXPECT_EQ(first.doDialog(), 0); // cancelled
    EXPECT_EQ(questions()[0].message, "Where is /x.pbk?");
    const std::string path = write("x.pbk", gainKernel);
    host.scripts.answers = {path};
    EXPECT_EQ(second.doDialog(), 0);
    for (Effect* effect : {&first, &second, &other})
        EXPECT_EQ(effect->updateParamsUi(), 0);
    expectGain(first, 1.5);
    expectGain(second, 2.5);
    EXPECT_FALSE(first.control(44).isHidden() || second.control(44).isHidden());
    EXPECT_EQ(first.save(), stored(path, false));
    EXPECT_EQ(other.title(), invalid);
    EXPECT_EQ(other.save(), stored("/gone/b/x.pbk", false));
    EXPECT_EQ(open(stored("C:\\x.pbk", false)).doDialog(), 0);
    EXPECT_EQ(open(stored("x.pbk", false)).doDialog(), 0);
    const std::vector<Question> asked = questions();
    EXPECT_EQ(asked[1].message, "Where is \\x.pbk?");
    EXPECT_EQ(asked[2].message, "Where is ?");
}

TEST_F(EffectInstance, IsReopenedOnAnotherMachine) {
    Effect& made = apply(layer, write("here/x.pbk", gainKernel));
    Stream& gain = made.control(44);
    gain.setKeyframe(gain.addKeyframe(0), {{.one_d = 1}, {}});
    gain.setKeyframe(gain.addKeyframe(2), {{.one_d = 3}, {}});
    expectGain(made, 2, 1);
    Effect& copy = made.duplicate();
    expectGain(copy, 2, 1);
    const Block saved = made.save();
    EXPECT_EQ(copy.save(), saved);
    const std::vector<Keyframe> keyframes = gain.keyframes;
    std::erase_if(layer.effects, [&](const auto& effect) { return effect.get() == &made; });
    expectGain(copy, 3, 2); // the copy shares only the kernel
    layer.effects.clear();
    plugin->setDown(); // the host is restarted
    ASSERT_EQ(plugin->setUp(), 0);

    std::filesystem::rename(folder / "here", folder / "there");
    host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", folder.string());
    Effect& reopened =
        open(saved, [&](Effect& effect) { effect.control(44).keyframes = keyframes; });
    EXPECT_EQ(reopened.title(), "TVM:Test");
    expectGain(reopened, 2, 1);
    EXPECT_NE(reopened.save(), saved);
    reopened.updateParamsUi();
    EXPECT_EQ(reopened.control(44).keyframes.size(), 2U); // no defaults over stored values
    expectGain(reopened, 3, 9);
}

TEST_F(EffectInstance, ManyInstancesShareTheirKernels) {
    std::vector<Effect*> all;
    for (int i = 0; i < 200; ++i) {
        const std::string name = "k" + std::to_string(i % 20) + ".pbk";
        all.push_back(&apply(layer, i < 20 ? write(name, gainKernel) : (folder / name).string()));
        setGain(*all.back(), i / 64.0);
    }
    int fromMemory = 0;
    for (const InfoPanel::Lines& lines : host.infoPanel.messages())
        fromMemory += lines.front() == "Kernel has been loaded from memory" ? 1 : 0;
    EXPECT_EQ(fromMemory, 180);
    for (int i = 199; i >= 0; i -= 3)
        expectGain(*all[static_cast<std::size_t>(i)], i / 64.0);
}
