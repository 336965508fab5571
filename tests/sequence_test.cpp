// Names and numbers of frames, and the program with sequences, stacks of effects and keyframes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "pbhost/pictures/picture.h"
#include "pbhost/process/failure.h"
#include "pbhost/sequence/frame_pattern.h"
#include "pbhost/sequence/frame_ranges.h"
#include "tests/support/program.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using pbhost::Depth;
using pbhost::FramePattern;
using pbhost::Picture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Texts = std::vector<std::string>;

namespace {

// Adds a number to every colour; several of them can be told apart.
std::string addText(const std::string& name, const std::string& function) {
    return "<languageVersion : 1.0;>\nkernel " + name +
           " < namespace: \"n\"; vendor: \"v\"; version: 1; >\n{ input image4 src; output pixel4 "
           "dst;\n"
           "parameter float amount < minValue: -10.0; maxValue: 10.0; defaultValue: 0.0; >;\n"
           "void evaluatePixel() { dst = sampleNearest(src, outCoord()); " +
           function + " } }";
}

class Sequences : public ProgramTest {
protected:
    Sequences() {
        write("add.pbk", addText("Add", "dst.rgb += amount;"));
        write("times.pbk", addText("Times", "dst.rgb *= amount;"));
    }

    // A frame of floats with that red; green is 0.5 and blue 0.
    static void writeFrame(const std::string& name, float red, unsigned width = 4) {
        Picture picture = pbhost::makePicture(width, 2, Depth::Bits32);
        for (unsigned i = 0; i < width * 2; ++i) {
            const float pixel[4] = {1, red, 0.5F, 0};
            std::memcpy(&picture.pixels[i * 16], pixel, 16);
        }
        pbhost::writePicture(name, picture);
    }

    static float redOf(const std::string& name) {
        const Picture picture = pbhost::readPicture(name, {.depth = Depth::Bits32});
        float red = 0;
        std::memcpy(&red, &picture.pixels[4], 4);
        return red;
    }

    static void writeFrames(long first, long last) {
        for (long frame = first; frame <= last; ++frame)
            writeFrame(FramePattern::parse("in.####.exr")->path(frame), float(frame));
    }

    static std::vector<std::string> filesLike(const std::string& start) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator("."))
            if (entry.path().filename().string().starts_with(start) &&
                entry.path().extension() != ".txt")
                names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
};

} // namespace

TEST(FramePattern, FormatsAndRecognizesNumbers) {
    const std::tuple<const char*, long, const char*> cases[] = {
        {"a/shot.%04d.exr", 7, "a/shot.0007.exr"},
        {"shot.%d.exr", 7, "shot.7.exr"},
        {"shot.####.exr", 12345, "shot.12345.exr"},
        {"shot.#.exr", 7, "shot.0007.exr"},
        {"shot.@@.exr", -5, "shot.-5.exr"},
        {"shot.@.exr", 5, "shot.5.exr"},
        {"shot#2.[####].exr", 7, "shot#2.0007.exr"},
        {"%d.####", -12, "%d.-012"},
        {"####", 3, "0003"},
    };
    for (const auto& [text, frame, path] : cases) {
        const auto pattern = FramePattern::parse(text);
        ASSERT_TRUE(pattern) << text;
        EXPECT_EQ(pattern->path(frame), path);
        EXPECT_EQ(pattern->frameOf(fs::path(path).filename()), frame) << text;
    }
    for (const char* text : {"plain.exr", "%s.exr", "100%.exr", "a####/plain.exr", "d.exr", ""})
        EXPECT_FALSE(FramePattern::parse(text)) << text;
    EXPECT_THROW(FramePattern::parse("%99999999999999999999d"), pbhost::Failure);
    EXPECT_THROW(FramePattern::parse(std::string(300, '#')), pbhost::Failure);
    const auto pattern = FramePattern::parse("s.####.exr");
    for (const char* name : {"s.007.exr", "s.00007.exr", "s.0x07.exr", "s..exr", "s.exr",
                             "s.0007.ex", "t.0007.exr", "s.99999999999999999999.exr", "s.-000.exr"})
        EXPECT_FALSE(pattern->frameOf(name)) << name;
}

TEST(FrameRanges, AreParsedAndWritten) {
    EXPECT_THAT(pbhost::parseFrames("1-7x2,9,12-10,-2--1,3"),
                ElementsAre(1, 3, 5, 7, 9, 12, 11, 10, -2, -1));
    EXPECT_THAT(pbhost::parseFrames("-5--9x2"), ElementsAre(-5, -7, -9));
    for (const char* text : {"1", "1-5", "5-1", "1-9x2", "-3-3", "1,5-7,20-10x5", "1,3"})
        EXPECT_EQ(pbhost::framesText(pbhost::parseFrames(text)), text);
    for (const auto& [text, why] : {std::pair("1:5", "x2"),
                                    {"1-9y2", "x2"},
                                    {"", "write numbers"},
                                    {"1-", "write numbers"},
                                    {"1,,2", "write numbers"},
                                    {"1-9x0", "at least 1"},
                                    {"1-99999999", "million"},
                                    {"a", "write numbers"},
                                    {"99999999999999999999", "write numbers"}})
        try {
            pbhost::parseFrames(text);
            ADD_FAILURE() << text;
        } catch (const pbhost::Failure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(why)) << text;
        }
}

TEST_F(Sequences, RenderEachFrameWithItsNumber) {
    writeFrames(8, 12);
    fs::remove("in.0010.exr");
    const Result all = run("render add.pbk -i 'in.####.exr' -o 'out.%03d.exr' --set amount=0.5");
    all.expectSuccess();
    EXPECT_THAT(all.err, HasSubstr("there are no frames 10; they are left out"));
    EXPECT_THAT(filesLike("out."),
                ElementsAre("out.008.exr", "out.009.exr", "out.011.exr", "out.012.exr"));
    EXPECT_EQ(redOf("out.008.exr"), 8.5F);
    EXPECT_EQ(redOf("out.012.exr"), 12.5F);
    // What happens to a missing frame: red of frame 10, or none.
    const std::string asked =
        "render add.pbk -i 'in.####.exr' -o 'm.#.exr' --frames 12-9 --missing ";
    run(asked + "error").expectFailure(4, {"in.0010.exr: there are no frames 10"});
    EXPECT_THAT(filesLike("m."), ElementsAre());
    const std::pair<const char*, float> cases[] = {{"hold", 9}, {"black", 0}};
    for (const auto& [what, red] : cases) {
        const Result result = run(asked + what);
        result.expectSuccess();
        EXPECT_THAT(result.err, HasSubstr("a single # stands for four digits"));
        EXPECT_EQ(redOf("m.0010.exr"), red) << what;
        EXPECT_EQ(redOf("m.0009.exr"), 9);
        for (const std::string& file : filesLike("m."))
            fs::remove(file);
    }
    run(asked + "skip").expectSuccess();
    EXPECT_EQ(filesLike("m.").size(), 3u);
    EXPECT_EQ(run("render add.pbk -i 'in.####.exr' -o 'n.####.exr' --frames 8-9 --dry-run").out,
              "n.0008.exr from in.0008.exr\nn.0009.exr from in.0009.exr\n");
    EXPECT_THAT(filesLike("n."), ElementsAre());
}

TEST_F(Sequences, StopOrGoOnAtAFailure) {
    writeFrames(1, 6);
    write("in.0003.exr", "this is no picture");
    const std::string asked = "render add.pbk -i 'in.####.exr' -o 'out.####.exr' ";
    run(asked).expectFailure(4, {"frame 3: cannot read 'in.0003.exr'"});
    EXPECT_THAT(filesLike("out."), ElementsAre("out.0001.exr", "out.0002.exr"));
    run(asked + "--keep-going").expectFailure(1, {"frame 3: ", "these frames failed: 3"});
    EXPECT_EQ(filesLike("out.").size(), 5u);
    EXPECT_FALSE(hasTemporaries());
    for (const auto& [more, code, text] :
         {std::tuple("-o out.exr", 2, "such as out.####.png"),
          std::tuple("-o 'out.####.exr' --frames 1:3", 2, "x2"),
          std::tuple("-o 'out.####.exr' --frames 2 --first 5", 2, "before the first frame"),
          std::tuple("-o 'out.####.exr' --memory 5", 2, "--memory 5"),
          std::tuple("-o 'out.####.exr' --frames 1-6 --no-clobber", 2, "out.0001.exr': it exists"),
          std::tuple("-o 'out.####.exr' --fps 0", 2, "--fps 0"),
          std::tuple("-o 'no/out.####.exr'", 1, "there is no folder"),
          std::tuple("-o 'out.####.xyz'", 1, "'.xyz'")})
        run(std::string("render add.pbk -i 'in.####.exr' ") + more).expectFailure(code, {text});
}

TEST_F(Sequences, AnimateStacksAndKeepThemInProjects) {
    writeFrame("still.exr", 1);
    const std::string keys = "--key add.amount@1=0 --key 1:amount@5=4 --key times.amount@1=1 "
                             "--key 2:amount@3=hold:2 --key times.amount@5=3";
    run("render add.pbk times.pbk -i still.exr -o 'a.####.exr' --frames 1-5 " + keys +
        " --save p.json")
        .expectSuccess();
    // (1 + amount of add) * amount of times.
    const float expected[] = {1, 2 * 1.5F, 3 * 2, 4 * 2, 5 * 3};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(redOf("a.000" + std::to_string(i + 1) + ".exr"), expected[i]) << i;
    const std::string first = bytesOf("a.0002.exr");
    // The other order, and without depth: integers are cut off between the effects.
    run("render times.pbk add.pbk -i still.exr -o b.exr --set 1:amount=3 --set add.amount=-1")
        .expectSuccess();
    EXPECT_EQ(redOf("b.exr"), 2);
    run("render add.pbk times.pbk -i still.exr -o b.png --depth 8 --set 1:amount=1 --set "
        "2:amount=0.5")
        .expectSuccess();
    EXPECT_NEAR(redOf("b.png"), 0.5, 1 / 255.0);
    run("render add.pbk times.pbk -i still.exr -o c.png --depth 32 --set 1:amount=1 --set "
        "2:amount=0.5")
        .expectSuccess();
    EXPECT_NEAR(redOf("c.png"), 1, 1e-4);
    // The folder is moved: the picture and the kernels are found beside the project.
    fs::create_directory("new");
    for (const char* file : {"p.json", "still.exr", "add.pbk", "times.pbk"})
        fs::rename(file, std::string("new/") + file);
    run("render --project new/p.json -o 'again.####.exr' --frames 1-5").expectSuccess();
    EXPECT_TRUE(bytesOf("again.0002.exr") == first);
    run("render --project new/p.json -o part.exr --frames 2 -o 'part.####.exr'")
        .expectFailure(2, {});
    run("render --project new/p.json -o 'part.####.exr' --frames 2").expectSuccess();
    EXPECT_TRUE(bytesOf("part.0002.exr") == first);
    fs::copy("new/add.pbk", "add.pbk");
    fs::copy("new/times.pbk", "times.pbk");
    const std::pair<const char*, const char*> wrong[] = {
        {"--set amount=1", "several effects have that control"},
        {"--set 3:amount=1", "there is no effect 3"},
        {"--set add.size=1", "no such control"},
        {"--set size=1", "no effect has that control"},
        {"--key amount=1", "CONTROL@FRAME"},
        {"--key add.amount@x=1", "CONTROL@FRAME"},
        {"--key add.amount@1=99", "out of range"},
    };
    for (const auto& [option, text] : wrong)
        run(std::string("render add.pbk times.pbk -o old.png ") + option).expectFailure(2, {text});
}

TEST_F(Sequences, ResumeRendersWhatIsNotComplete) {
    writeFrames(1, 6);
    const auto render = [&](const std::string& more) {
        const Result result = run("render add.pbk -i 'in.####.exr' -o 'out.####.exr' --resume "
                                  "--progress json " +
                                  more);
        result.expectSuccess();
        std::vector<int> rendered;
        std::istringstream lines(result.err);
        for (std::string line; std::getline(lines, line);)
            if (const auto json = nlohmann::json::parse(line); json["state"] == "rendered")
                rendered.push_back(json["frame"]);
        return rendered;
    };
    EXPECT_THAT(render("--frames 1-5"), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(render(""), ElementsAre(6));
    EXPECT_THAT(render(""), ElementsAre());
    fs::remove("out.0001.exr");
    fs::resize_file("out.0002.exr", 100);
    writeFrame("in.0003.exr", 30, 5); // another size of the file
    fs::remove(".pbhost/out.0004.exr.json");
    write(".pbhost/out.0005.exr.json", "{\"file\": 3, \"recipe\": []}");
    EXPECT_THAT(render(""), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_EQ(redOf("out.0003.exr"), 30);
    EXPECT_THAT(render("--set amount=0"), ElementsAre()); // the value that it had
    EXPECT_THAT(render("--key amount@2=0 --key amount@4=1"), ElementsAre(3, 4, 5, 6));
    write("add.pbk", addText("Add", "dst.rgb -= amount;"));
    EXPECT_EQ(render("").size(), 6u);
    EXPECT_EQ(render("--compression piz").size(), 6u);
    EXPECT_EQ(run("render add.pbk -i 'in.####.exr' -o 'out.####.exr' --resume --dry-run "
                  "--compression piz")
                  .out,
              "");
}

// Ctrl-C in the middle: complete frames stay, nothing is half, and --resume goes on.
TEST_F(Sequences, InterruptsLeaveCompleteFrames) {
    write("slow.pbk",
          addText("Slow", "for (int i = 0; i < 1000; ++i) dst.r = sin(dst.r + amount);"));
    const std::string asked = "render slow.pbk -o 'out.####.png' --frames 1-24 --size 200x200";
    const pid_t parent = fork();
    if (parent == 0) {
        execl(PBHOST_PATH, "pbhost", "render", "slow.pbk", "-o", "out.####.png", "--frames", "1-24",
              "--size", "200x200", "-q", nullptr);
        _exit(127);
    }
    while (filesLike("out.").size() < 3)
        std::this_thread::sleep_for(5ms);
    kill(parent, SIGINT);
    int status = 0;
    waitpid(parent, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 130);
    const Texts files = filesLike("out.");
    EXPECT_LT(files.size(), 24u);
    EXPECT_FALSE(hasTemporaries());
    for (const std::string& file : files)
        EXPECT_EQ(pbhost::readPicture(file).width, 200u);
    EXPECT_THAT(run(asked + " --resume --progress json").err, HasSubstr("\"skipped\""));
    EXPECT_EQ(filesLike("out.").size(), 24u);
}

// A second input that is a sequence too, bounded memory, and many files in the folder.
TEST_F(Sequences, ReadSeveralSequencesWithLittleMemory) {
    write("both.pbk",
          "<languageVersion : 1.0;>\nkernel Both < namespace: \"n\"; version: 1; >\n"
          "{ input image4 a; input image4 b; output pixel4 dst; void evaluatePixel() {\n"
          "dst = sampleNearest(a, outCoord()) + 100.0 * sampleNearest(b, outCoord()); } }");
    writeFrames(1, 9);
    write(".pbhost-7-new.exr", "");
    write(".pbhost-7-old.exr", "");
    fs::last_write_time(".pbhost-7-old.exr", fs::file_time_type::clock::now() - 25h);
    for (int frame = 1; frame <= 9; ++frame)
        writeFrame("second.00" + std::to_string(frame) + ".exr", float(10 - frame));
    for (int i = 0; i < 3000; ++i)
        write("other." + std::to_string(i) + ".txt", "");
    run("render both.pbk -i 'in.####.exr' -i 'second.###.exr' -o 'out.####.exr' --memory 1K")
        .expectSuccess();
    for (int frame = 1; frame <= 9; ++frame)
        EXPECT_EQ(redOf("out.000" + std::to_string(frame) + ".exr"),
                  float(frame + 100 * (10 - frame)));
    EXPECT_THAT(filesLike(".pbhost-"), ElementsAre(".pbhost-7-new.exr"));
    const Result still = run("render both.pbk -i in.0001.exr -i second.001.exr -o one.exr");
    still.expectSuccess();
    EXPECT_TRUE(bytesOf("one.exr") == bytesOf("out.0001.exr"));
    fs::remove("second.005.exr");
    run("render both.pbk -i 'in.####.exr' -i 'second.###.exr' -o 'out.####.exr'")
        .expectFailure(4, {"second.005.exr: there are no frames 5"});
    fs::remove("in.0002.exr");
    for (const auto& [rule, second, fifth] :
         {std::tuple("skip", 0, 0), std::tuple("black", 100 * 8, 5),
          std::tuple("hold", 801, 605)}) {
        SCOPED_TRACE(rule);
        for (const std::string& name : filesLike("out."))
            fs::remove(name);
        const Result result =
            run(std::string("render both.pbk -i 'in.####.exr' -i 'second.###.exr' -o "
                            "'out.####.exr' --frames 1-9 --missing ") +
                rule);
        result.expectSuccess();
        EXPECT_THAT(result.err, HasSubstr("of second.###.exr there are no frames 5"));
        EXPECT_EQ(filesLike("out.").size(), second == 0 ? 7u : 9u);
        if (second != 0) {
            EXPECT_EQ(redOf("out.0002.exr"), float(second));
            EXPECT_EQ(redOf("out.0005.exr"), float(fifth));
        }
        EXPECT_EQ(redOf("out.0009.exr"), 109.0F);
    }
}

// Saturated colours show a wrong matrix or range.
TEST_F(Sequences, VideosKeepColoursAndNumbers) {
    const unsigned char colours[4][3] = {{255, 0, 0}, {0, 200, 30}, {20, 40, 240}, {250, 250, 250}};
    for (int frame = 1; frame <= 4; ++frame) {
        Picture picture = pbhost::makePicture(64, 48, Depth::Bits8);
        for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
            picture.pixels[i] = std::byte{255};
            std::memcpy(&picture.pixels[i + 1], colours[frame - 1], 3);
        }
        pbhost::writePicture("c.000" + std::to_string(frame) + ".png", picture);
    }
    for (const auto& [name, depths] :
         {std::pair("v.mp4", Texts{"8"}), {"v.mkv", {"8"}}, {"v.mov", {"8", "16", "32"}}}) {
        SCOPED_TRACE(name);
        run(std::string("render add.pbk -i 'c.####.png' --fps 30 -o ") + name).expectSuccess();
        for (const std::string& depth : depths) {
            run(std::string("render add.pbk -i ") + name +
                " -o 'd.#.png' --frames 2-4 --type uint8 --depth " + depth)
                .expectSuccess();
            EXPECT_THAT(filesLike("d."), ElementsAre("d.0002.png", "d.0003.png", "d.0004.png"));
            for (int frame = 2; frame <= 4; ++frame) {
                const Picture picture =
                    pbhost::readPicture("d.000" + std::to_string(frame) + ".png");
                EXPECT_EQ(picture.header->hasAlpha,
                          std::string(name) == "v.mov"); // the frames have one
                for (int c = 0; c < 3; ++c)
                    EXPECT_NEAR(int(picture.row(24)[32 * 4 + 1 + c]), colours[frame - 1][c], 3)
                        << frame;
            }
        }
    }
    const std::string resumed = "render add.pbk -i v.mp4 -o w.mp4 --resume --progress json";
    for (const char* state : {"rendered", "skipped"})
        EXPECT_THAT(run(resumed).err, HasSubstr(std::string("\"") + state + "\""));
    EXPECT_THAT(run(resumed + " --set amount=1").err, Not(HasSubstr("skipped")));
    fs::remove("w.mp4");
    ASSERT_EQ(std::system("ffmpeg -v error -i v.mp4 -c copy -metadata:s:v rotate=90 upright.mp4"),
              0);
    run("render add.pbk -i upright.mp4 -o 'r.#.png' --frames 1").expectSuccess();
    const Picture upright = pbhost::readPicture("r.0001.png");
    EXPECT_EQ(upright.width, 48u);
    EXPECT_EQ(upright.height, 64u);
    for (const auto& [arguments, code, text] :
         {std::tuple("-i v.mp4 -o w.mp4 --frames 3-5", 4, "v.mp4: there are no frames 5"),
          std::tuple("-i old.png -o w.avi --frames 1", 2, ".mov, .mp4 or .mkv"),
          std::tuple("-i v.mp4 -o w.mp4 --codec prores", 2, "ProRes is written"),
          std::tuple("-i no.mov -o w.mp4", 4, "no such file"),
          std::tuple("-i add.mov -o w.mp4", 4, "it has no video")}) {
        write("add.mov", "no video");
        run(std::string("render add.pbk ") + arguments).expectFailure(code, {text});
        EXPECT_FALSE(fs::exists("w.mp4"));
    }
    EXPECT_FALSE(hasTemporaries());
}
