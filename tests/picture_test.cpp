#include "pbhost/picture.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <bit>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <string>

namespace fs = std::filesystem;
using pbhost::Depth;
using pbhost::Picture;
using pbhost::PictureError;
using pbhost::readPicture;
using pbhost::writePicture;

extern "C" {
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();
}

namespace {

class PictureTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "picture_test.XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override { fs::remove_all(folder); }

    // A file as another program would leave it.
    void writeFile(const fs::path& path, const OIIO::ImageSpec& spec, const void* pixels) {
        const auto output = OIIO::ImageOutput::create(path.string());
        ASSERT_TRUE(output && output->open(path.string(), spec)) << OIIO::geterror();
        ASSERT_TRUE(output->write_image(spec.format, pixels)) << output->geterror();
        ASSERT_TRUE(output->close()) << output->geterror();
    }
    std::size_t fileCount() const {
        return std::size_t(std::distance(fs::directory_iterator(folder), {}));
    }

    fs::path folder;
};

// What is allocated meanwhile may leak. The library's PNG reader jumps past a string when a file
// ends early.
class LeaksAllowed {
public:
    explicit LeaksAllowed(bool isMeant) : isActive(isMeant && __lsan_disable != nullptr) {
        if (isActive)
            __lsan_disable();
    }
    LeaksAllowed(const LeaksAllowed&) = delete;
    LeaksAllowed& operator=(const LeaksAllowed&) = delete;
    ~LeaksAllowed() {
        if (isActive)
            __lsan_enable();
    }

private:
    bool isActive;
};

template<typename Value>
Value channelAt(const Picture& picture, unsigned x, unsigned y, unsigned channel) {
    Value value;
    std::memcpy(&value, picture.row(y) + (x * 4 + channel) * sizeof(Value), sizeof(Value));
    return value;
}

double valueAt(const Picture& picture, unsigned x, unsigned y, unsigned channel) {
    switch (picture.depth) {
    case Depth::Bits8:
        return channelAt<std::uint8_t>(picture, x, y, channel) / 255.0;
    case Depth::Bits16:
        return channelAt<std::uint16_t>(picture, x, y, channel) / 32768.0;
    default:
        return channelAt<float>(picture, x, y, channel);
    }
}

// Any legal value in any channel, alpha 0 over a colour included, and rows of an odd length.
Picture noise(unsigned width, unsigned height, Depth depth) {
    Picture picture = pbhost::makePicture(width, height, depth);
    std::mt19937 random(7);
    picture.rowBytes += 3;
    picture.pixels.assign(std::size_t{picture.rowBytes} * height, std::byte{0x5a});
    for (unsigned y = 0; y < height; ++y)
        for (unsigned i = 0; i < width * 4; ++i) {
            const std::uint32_t bits = i % 16 == 0 ? 0 : random();
            const std::uint8_t eight = bits & 255;
            const std::uint16_t sixteen = bits % 32769;
            const float real = float(bits) / 4294967296.0f;
            const void* value = depth == Depth::Bits8    ? static_cast<const void*>(&eight)
                                : depth == Depth::Bits16 ? static_cast<const void*>(&sixteen)
                                                         : &real;
            const unsigned bytes = pbhost::bytesPerChannel(depth);
            std::memcpy(picture.row(y) + i * bytes, value, bytes);
        }
    return picture;
}

double worstDifference(const Picture& left, const Picture& right, bool hasAlpha) {
    double worst = 0;
    for (unsigned y = 0; y < left.height; ++y)
        for (unsigned x = 0; x < left.width; ++x)
            for (unsigned c = 0; c < 4; ++c) {
                const double expected = c == 0 && !hasAlpha ? 1.0 : valueAt(left, x, y, c);
                worst = std::max(worst, std::abs(expected - valueAt(right, x, y, c)));
            }
    return worst;
}

std::string messageOf(const auto& work) {
    try {
        work();
    } catch (const PictureError& error) {
        return error.what();
    }
    return {};
}

} // namespace

TEST_F(PictureTest, WhatIsWrittenIsReadAgain) {
    const struct {
        const char* name;
        Depth depth, fileDepth;
        double tolerance;
        bool hasAlpha;
    } cases[] = {
        {"a.png", Depth::Bits8, Depth::Bits8, 0, true},
        {"b.PNG", Depth::Bits16, Depth::Bits16, 1 / 32768.0, true},
        {"c.png", Depth::Bits32, Depth::Bits16, 1 / 32768.0, true},
        {"d.tif", Depth::Bits8, Depth::Bits8, 0, true},
        {"e.tif", Depth::Bits16, Depth::Bits16, 1 / 32768.0, true},
        {"f.tif", Depth::Bits32, Depth::Bits32, 0, true},
        {"g.exr", Depth::Bits8, Depth::Bits32, 0.5 / 255, true},
        {"h.exr", Depth::Bits16, Depth::Bits32, 1 / 65536.0, true},
        {"i.exr", Depth::Bits32, Depth::Bits32, 0, true},
        {"j.tga", Depth::Bits8, Depth::Bits8, 0, true},
        {"k.sgi", Depth::Bits16, Depth::Bits16, 1 / 32768.0, true},
        {"l.ppm", Depth::Bits8, Depth::Bits8, 0, false},
        {"m.bmp", Depth::Bits16, Depth::Bits8, 0.51 / 255, true},
    };
    for (const auto& test : cases)
        for (const auto& [width, height] : {std::pair{37u, 23u}, {1u, 1u}}) {
            SCOPED_TRACE(std::string(test.name) + " " + std::to_string(width));
            const Picture picture = noise(width, height, test.depth);
            writePicture(folder / test.name, picture);
            const Picture again = readPicture(folder / test.name);
            EXPECT_EQ(again.depth, test.fileDepth);
            ASSERT_EQ(std::pair(again.width, again.height), std::pair(width, height));
            EXPECT_EQ(again.rowBytes, width * pbhost::bytesPerPixel(test.fileDepth));
            EXPECT_LE(worstDifference(picture, again, test.hasAlpha), test.tolerance);
            const Picture same = readPicture(folder / test.name, test.depth);
            EXPECT_LE(worstDifference(picture, same, test.hasAlpha), test.tolerance);
        }
    EXPECT_EQ(fileCount(), std::size(cases));
}

TEST_F(PictureTest, JpegLosesAlphaAndLittleElse) {
    Picture picture = pbhost::makePicture(64, 64, Depth::Bits8);
    for (unsigned y = 0; y < 64; ++y)
        for (unsigned x = 0; x < 64; ++x) {
            const std::byte pixel[4] = {std::byte(x), std::byte(200), std::byte(2 * x),
                                        std::byte(3 * y)};
            std::memcpy(picture.row(y) + x * 4, pixel, 4);
        }
    writePicture(folder / "x.jpg", picture);
    EXPECT_LE(worstDifference(picture, readPicture(folder / "x.jpg"), false), 8 / 255.0);
}

TEST_F(PictureTest, FloatsKeepTheirBits) {
    using Limits = std::numeric_limits<float>;
    const float values[8] = {std::bit_cast<float>(0x7fc12345u),
                             Limits::infinity(),
                             -Limits::infinity(),
                             -2.5f,
                             Limits::denorm_min(),
                             -0.0f,
                             Limits::max(),
                             1e-20f};
    Picture picture = pbhost::makePicture(2, 1, Depth::Bits32);
    std::memcpy(picture.pixels.data(), values, sizeof values);
    for (const char* name : {"x.exr", "x.tif"}) {
        writePicture(folder / name, picture);
        EXPECT_EQ(readPicture(folder / name).pixels, picture.pixels) << name;
    }
}

TEST_F(PictureTest, HalvesAreReadExactly) {
    const std::uint16_t halves[8] = {0x3555, 0x7bff, 0xae66, 0, 0x3c00, 1, 0xfc00, 0x3800};
    const float values[8] = {0.333251953125f,
                             65504,
                             -0.0999755859375f,
                             0,
                             1,
                             0x1p-24f,
                             -std::numeric_limits<float>::infinity(),
                             0.5f};
    writeFile(folder / "x.exr", OIIO::ImageSpec(2, 1, 4, OIIO::TypeDesc::HALF), halves);
    const Picture picture = readPicture(folder / "x.exr");
    ASSERT_EQ(picture.depth, Depth::Bits32);
    for (unsigned i = 0; i < 8; ++i) // the file's red, green, blue, alpha
        EXPECT_EQ(channelAt<float>(picture, i / 4, 0, (i % 4 + 1) % 4), values[i]) << i;
}

TEST_F(PictureTest, ChannelsFindTheirPlaces) {
    const struct {
        const char* name;
        std::vector<std::string> channels;
        std::vector<std::uint16_t> file;
        std::array<unsigned, 4> host; // alpha, red, green, blue
    } cases[] = {
        {"grey.png", {"Y"}, {30000}, {32768, 15000, 15000, 15000}},
        {"greyAlpha.png", {"Y", "A"}, {65535, 0}, {0, 32768, 32768, 32768}},
        {"colour.png", {"R", "G", "B"}, {0, 65535, 2000}, {32768, 0, 32768, 1000}},
        {"all.tif", {"R", "G", "B", "A"}, {2, 4, 65535, 6}, {3, 1, 2, 32768}},
        {"more.tif", {"R", "G", "B", "A", "Z"}, {2, 4, 6, 8, 10}, {4, 1, 2, 3}},
    };
    for (const auto& test : cases) {
        OIIO::ImageSpec spec(1, 1, int(test.channels.size()), OIIO::TypeDesc::UINT16);
        spec.channelnames = test.channels;
        spec.attribute("oiio:UnassociatedAlpha", 1);
        writeFile(folder / test.name, spec, test.file.data());
        const Picture picture = readPicture(folder / test.name);
        ASSERT_EQ(picture.depth, Depth::Bits16);
        for (unsigned c = 0; c < 4; ++c)
            EXPECT_EQ(channelAt<std::uint16_t>(picture, 0, 0, c), test.host[c])
                << test.name << " channel " << c;
    }
}

TEST_F(PictureTest, DepthsConvertByTheirWhite) {
    Picture picture = pbhost::makePicture(2, 1, Depth::Bits16);
    const std::uint16_t values[8] = {32768, 16384, 6554, 0, 0, 32768, 1, 32767};
    std::memcpy(picture.pixels.data(), values, sizeof values);
    writePicture(folder / "16.png", picture);
    picture = readPicture(folder / "16.png", Depth::Bits8);
    const std::uint8_t bytes[8] = {255, 128, 51, 0, 0, 255, 0, 255};
    ASSERT_EQ(picture.pixels.size(), 8u);
    for (unsigned i = 0; i < 8; ++i)
        EXPECT_EQ(int(picture.pixels[i]), bytes[i]) << i;
    writePicture(folder / "8.png", picture);
    const Picture wide = readPicture(folder / "8.png", Depth::Bits16);
    const Picture real = readPicture(folder / "8.png", Depth::Bits32);
    for (unsigned i = 0; i < 8; ++i) {
        EXPECT_NEAR(valueAt(wide, i / 4, 0, i % 4), bytes[i] / 255.0, 0.5 / 32768) << i;
        EXPECT_NEAR(valueAt(real, i / 4, 0, i % 4), bytes[i] / 255.0, 1e-7) << i;
    }
}

// The file holds columns -1 to 1 and rows 1 to 2 of a display of 3 by 2 pixels.
TEST_F(PictureTest, OpenExrPixelsLieInTheDisplayWindow) {
    OIIO::ImageSpec spec(3, 2, 5, OIIO::TypeDesc::FLOAT);
    spec.channelnames = {"Z", "B", "A", "R", "G"};
    spec.alpha_channel = 2;
    spec.x = -1;
    spec.y = 1;
    spec.full_width = 3;
    spec.full_height = 2;
    std::vector<float> pixels;
    for (int y = 1; y <= 2; ++y)
        for (int x = -1; x <= 1; ++x)
            for (float channel : {9.0f, 3.0f, 0.5f, 1.0f, 2.0f})
                pixels.push_back(channel + 10 * float(x) + 100 * float(y));
    writeFile(folder / "x.exr", spec, pixels.data());
    const Picture picture = readPicture(folder / "x.exr");
    ASSERT_EQ(std::pair(picture.width, picture.height), std::pair(3u, 2u));
    const float host[4] = {0.5f, 1, 2, 3};
    for (unsigned y = 0; y < 2; ++y)
        for (unsigned x = 0; x < 3; ++x)
            for (unsigned c = 0; c < 4; ++c)
                EXPECT_EQ(channelAt<float>(picture, x, y, c),
                          y == 1 && x < 2 ? host[c] + 10 * float(x) + 100 : 0.0f)
                    << x << "," << y << " channel " << c;
}

TEST_F(PictureTest, UnreadableFilesSayWhy) {
    writePicture(folder / "whole.png", noise(64, 64, Depth::Bits8));
    writePicture(folder / "whole.jpg", noise(64, 64, Depth::Bits8));
    for (const char* extension : {"png", "jpg"}) {
        const fs::path cut = folder / (std::string("cut.") + extension);
        fs::copy_file(folder / (std::string("whole.") + extension), cut);
        fs::resize_file(cut, fs::file_size(cut) / 2);
    }
    std::ofstream(folder / "text.png") << "this is a text, not a picture\n";
    std::ofstream(folder / "empty.tif").flush();
    std::ofstream(folder / "vast.ppm") << "P6 200000 200000 255\n012";
    fs::create_directory(folder / "folder.png");
    const struct {
        const char* name;
        const char* reason;
    } cases[] = {
        {"missing.png", "no such file"}, {"folder.png", "folder"}, {"cut.png", "end of file"},
        {"cut.jpg", "Premature end"},    {"text.png", ""},         {"empty.tif", ""},
        {"vast.ppm", "200000"},
    };
    for (const auto& test : cases) {
        const LeaksAllowed scope(test.name == std::string("cut.png"));
        const std::string message = messageOf([&] { readPicture(folder / test.name); });
        EXPECT_NE(message.find("cannot read '" + (folder / test.name).string() + "': "),
                  std::string::npos)
            << test.name << ": " << message;
        EXPECT_NE(message.find(test.reason), std::string::npos) << test.name << ": " << message;
    }
}

TEST_F(PictureTest, FailedWriteLeavesTheOldFile) {
    const Picture old = noise(5, 4, Depth::Bits8);
    fs::create_directory(folder / "folder.png");
    Picture lacking = noise(5, 4, Depth::Bits8);
    lacking.pixels.pop_back();
    lacking.rowBytes += 1;
    const Picture large = noise(100, 100, Depth::Bits8);
    const struct {
        const char* name;
        const Picture& picture;
        const char* reason;
    } cases[] = {
        {"a.png", lacking, "fewer pixels"},
        {"b.png", Picture{}, "empty"},
        {"c.xyz", old, "'.xyz'"},
        {"d.zfile", old, ""},
        {"nowhere/e.png", old, "no folder"},
        {"folder.png", old, "folder"},
        {"g.png", large, "File too large"},
        {"h.jpg", large, "File too large"},
        {"i.exr", large, "File too large"},
        {"j.sgi", large, "damaged"},
    };
    // A stand-in for a full disk: no file may grow beyond 4000 bytes.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    for (const auto& test : cases) {
        const fs::path path = folder / test.name;
        std::ofstream(path) << "old content";
        const std::size_t files = fileCount();
        const rlimit small{4000, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
        const std::string message = messageOf([&] { writePicture(path, test.picture); });
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_NE(message.find("cannot write '" + path.string() + "': "), std::string::npos)
            << message;
        EXPECT_NE(message.find(test.reason), std::string::npos) << message;
        EXPECT_EQ(message.find(".pbhost-"), std::string::npos) << message;
        EXPECT_EQ(fileCount(), files) << test.name;
        std::string content;
        if (std::getline(std::ifstream(path), content)) {
            EXPECT_EQ(content, "old content");
        }
    }
}
