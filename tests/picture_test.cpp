#include "pbhost/pictures/picture.h"
#include "pbhost/process/failure.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using pbhost::Depth;
using pbhost::Picture;
using pbhost::readPicture;
using pbhost::writePicture;

namespace {

class PictureTest : public testing::Test {
protected:
    // Writes a file with OpenImageIO directly.
    template<class Value>
    fs::path writeFile(const char* name, const OIIO::ImageSpec& spec,
                       const std::vector<Value>& pixels) {
        const fs::path path = folder / name;
        const auto output = OIIO::ImageOutput::create(path.string());
        EXPECT_TRUE(output && output->open(path.string(), spec)) << OIIO::geterror();
        EXPECT_TRUE(output->write_image(OIIO::BaseTypeFromC<Value>::value, pixels.data()));
        EXPECT_TRUE(output->close()) << output->geterror();
        return path;
    }
    auto fileCount() const { return std::distance(fs::directory_iterator(folder), {}); }

    const TemporaryFolder temporary_;
    const fs::path folder = temporary_.path;
};

// All channels in memory order; 1 is white.
std::vector<double> valuesOf(const Picture& picture) {
    std::vector<double> values;
    for (unsigned i = 0; i < picture.width * picture.height * 4; ++i) {
        const unsigned bytes = pbhost::componentBytesOf(picture.depth), row = picture.width * 4;
        std::uint16_t whole = 0;
        float real = 0;
        std::memcpy(bytes == 4 ? static_cast<void*>(&real) : &whole,
                    picture.row(i / row) + i % row * bytes, bytes);
        values.push_back(bytes == 4 ? double{real} : whole / (bytes == 1 ? 255.0 : 32768.0));
    }
    return values;
}

// A different gradient in each channel, including colours with alpha 0, and rows of odd length.
Picture slopes(unsigned width, unsigned height, Depth depth) {
    Picture picture = pbhost::makePicture(width, height, depth);
    const unsigned bytes = pbhost::componentBytesOf(depth);
    picture.rowBytes += 3;
    picture.pixels.resize(std::size_t{picture.rowBytes} * height);
    for (unsigned i = 0; i < width * height * 4; ++i) {
        const unsigned x = i / 4 % width, y = i / 4 / width;
        const float across = float(x) / float(width), down = float(y) / float(height);
        const float real = std::array{across, 1 - down / 2, down, 1 - across}[i % 4];
        const auto whole = std::uint32_t(real * (bytes == 1 ? 255 : 32768));
        std::memcpy(picture.row(y) + (x * 4 + i % 4) * bytes,
                    bytes == 4 ? static_cast<const void*>(&real) : &whole, bytes);
    }
    return picture;
}

double worstDifference(const Picture& left, const Picture& right, bool hasAlpha) {
    const std::vector<double> expected = valuesOf(left), values = valuesOf(right);
    double worst = expected.size() == values.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(expected.size(), values.size()); ++i) {
        const double error = std::abs((i % 4 > 0 || hasAlpha ? expected[i] : 1) - values[i]);
        worst = error <= worst || std::isnan(worst) ? worst : error; // keeps a NaN
    }
    return worst;
}

void expectError(const std::string& start, const char* reason, const auto& work) {
    try {
        work();
        ADD_FAILURE() << "no error; expected: " << start;
    } catch (const pbhost::Failure& error) {
        const std::string message = error.what();
        EXPECT_TRUE(message.starts_with(start)) << message;
        EXPECT_NE(message.find(reason), std::string::npos) << message;
        EXPECT_EQ(message.find(".pbhost-"), std::string::npos) << message;
    }
}

} // namespace

TEST_F(PictureTest, WrittenPicturesAreReadBack) {
    const std::tuple<const char*, Depth, Depth, double, bool> cases[] = {
        // file, depth of the picture and of the file, tolerance, whether the file has alpha
        {"a.png", Depth::Bits8, Depth::Bits8, 0, true},
        {"b.PNG", Depth::Bits16, Depth::Bits16, 1 / 32768.0, true},
        {"c.png", Depth::Bits32, Depth::Bits16, 1 / 32768.0, true},
        {"d.tif", Depth::Bits8, Depth::Bits8, 0, true},
        {"e.exr", Depth::Bits8, Depth::Bits32, 0.5 / 255, true},
        {"f.exr", Depth::Bits16, Depth::Bits32, 1 / 65536.0, true},
        {"g.jpg", Depth::Bits8, Depth::Bits8, 8 / 255.0, false},
        {"h.bmp", Depth::Bits16, Depth::Bits8, 0.51 / 255, true},
    };
    for (const auto& [name, depth, fileDepth, tolerance, hasAlpha] : cases)
        for (const auto& [width, height] : {std::pair{37u, 23u}, {1u, 1u}}) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(width));
            const Picture picture = slopes(width, height, depth);
            writePicture(folder / name, picture);
            const Picture again = readPicture(folder / name);
            EXPECT_EQ(again.depth, fileDepth);
            EXPECT_EQ(std::pair(again.width, again.height), std::pair(width, height));
            EXPECT_LE(worstDifference(picture, again, hasAlpha), tolerance);
            const Picture same = readPicture(folder / name, {.depth = depth});
            EXPECT_LE(worstDifference(picture, same, hasAlpha), tolerance);
        }
    EXPECT_EQ(std::size_t(fileCount()), std::size(cases));
}

TEST_F(PictureTest, FloatsAreBitExact) {
    // A NaN with a payload, both infinities, -2.5, the smallest, -0, the largest, 1e-20.
    const std::uint32_t bits[8] = {0x7fc12345, 0x7f800000, 0xff800000, 0xc0200000,
                                   1,          0x80000000, 0x7f7fffff, 0x1e3ce508};
    Picture picture = pbhost::makePicture(2, 1, Depth::Bits32);
    std::memcpy(picture.pixels.data(), bits, sizeof bits);
    for (const char* name : {"x.exr", "x.tif"}) {
        writePicture(folder / name, picture);
        EXPECT_EQ(readPicture(folder / name).pixels, picture.pixels) << name;
    }
}

TEST_F(PictureTest, MapsChannels) {
    using Numbers = std::vector<std::uint16_t>;
    const std::tuple<const char*, std::vector<std::string>, Numbers, Numbers> cases[] = {
        // channels and values of the file; alpha, red, green, blue of the picture
        {"grey.png", {"Y"}, {30000}, {32768, 15000, 15000, 15000}},
        {"greyAlpha.png", {"Y", "A"}, {65535, 0}, {0, 32768, 32768, 32768}},
        {"colour.png", {"R", "G", "B"}, {0, 65535, 2000}, {32768, 0, 32768, 1000}},
        {"more.tif", {"R", "G", "B", "A", "Z"}, {2, 4, 6, 8, 10}, {4, 1, 2, 3}},
    };
    for (const auto& [name, channels, values, expected] : cases) {
        OIIO::ImageSpec spec(1, 1, int(channels.size()), OIIO::TypeDesc::UINT16);
        spec.channelnames = channels;
        spec.attribute("oiio:UnassociatedAlpha", 1);
        const Picture picture = readPicture(writeFile(name, spec, values));
        ASSERT_EQ(picture.pixels.size(), 8u) << name;
        EXPECT_EQ(std::memcmp(picture.pixels.data(), expected.data(), 8), 0) << name;
    }
}

// Half floats, in columns -1 and 0 and row 1 of a display window of 2 by 2 pixels: the data window
// is read, and a format without windows gets the display window.
TEST_F(PictureTest, KeepsOpenExrWindows) {
    OIIO::ImageSpec spec(2, 1, 5, OIIO::TypeDesc::HALF);
    spec.channelnames = {"Z", "B", "A", "R", "G"};
    spec.alpha_channel = 2;
    spec.x = -1;
    spec.y = 1;
    spec.full_width = spec.full_height = 2;
    const std::vector<float> values = {9, 9, 9, 9, 9, 9, 65504, 0.5F, -1, 0x1p-24F};
    const Picture picture = readPicture(writeFile("x.exr", spec, values));
    const std::vector<double> expected = {9, 9, 9, 9, 0.5, -1, 0x1p-24, 65504};
    EXPECT_EQ(valuesOf(picture), expected);
    EXPECT_EQ(picture.header->leftOut, "the channels Z");
    writePicture(folder / "y.exr", picture);
    const Picture again = readPicture(folder / "y.exr");
    EXPECT_EQ(valuesOf(again), expected);
    EXPECT_EQ(again.header->type, pbhost::ValueType::Half);
    EXPECT_EQ(again.header->data, (pbhost::Window{-1, 1, 2, 1}));
    EXPECT_EQ(again.header->display, (pbhost::Window{0, 0, 2, 2}));
    writePicture(folder / "z.tif", picture, {.alpha = pbhost::Alpha::Premultiplied});
    const std::vector<double> shown = {0, 0, 0, 0, 0, 0, 0, 0, 0.5, -1, 0x1p-24, 65504, 0, 0, 0, 0};
    EXPECT_EQ(valuesOf(readPicture(folder / "z.tif")), shown);
}

TEST_F(PictureTest, UnreadableFilesGiveReasons) {
    for (const char* name : {"cut.png", "cut.jpg"}) {
        writePicture(folder / name, slopes(64, 64, Depth::Bits8));
        fs::resize_file(folder / name, fs::file_size(folder / name) / 2);
    }
    std::ofstream(folder / "text.png") << "this is a text, not a picture\n";
    std::ofstream(folder / "vast.ppm") << "P6 200000 200000 255\n012";
    const std::pair<const char*, const char*> cases[] = {
        {"missing.png", "no such file"}, {"cut.png", "end of file"},
        {"cut.jpg", "Premature end"},    {"text.png", ""},
        {"vast.ppm", "200000"},
    };
    for (const auto& [name, reason] : cases) {
        const fs::path path = folder / name;
        expectError("cannot read '" + path.string() + "': ", reason, [&] { readPicture(path); });
    }
}

// Simulates a full disk with a file size limit of 1000 bytes.
TEST_F(PictureTest, AFailedWriteKeepsTheOldFile) {
    const Picture large = slopes(500, 500, Depth::Bits16);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{1000, before.rlim_max};
    const std::pair<const char*, const char*> cases[] = {
        {"a.xyz", "'.xyz'"},
        {"b.png", "File too large"},
        {"c.exr", "File too large"},
        {"d.sgi", "damaged"}, // its writer does not detect the error
    };
    for (const auto& [name, reason] : cases) {
        const fs::path path = folder / name;
        std::ofstream(path) << "old content";
        const auto files = fileCount();
        ::setrlimit(RLIMIT_FSIZE, &small);
        expectError("cannot write '" + path.string() + "': ", reason,
                    [&] { writePicture(path, large); });
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(fileCount(), files) << name;
        EXPECT_EQ(fs::file_size(path), std::strlen("old content")) << name;
    }
}
