// What happens to a picture between its file and the written one, by the program and a kernel that
// copies. Files are written and read here with OpenImageIO directly.
#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>

#include "tests/support/program.h"

namespace fs = std::filesystem;
using testing::HasSubstr;
using Floats = std::vector<float>;

namespace {

OIIO::ImageSpec specOf(int width, int height, int channels, OIIO::TypeDesc type) {
    OIIO::ImageSpec spec(width, height, channels, type);
    spec.attribute("oiio:UnassociatedAlpha", 1); // the values are those of the file
    return spec;
}

void writeFile(const std::string& name, const OIIO::ImageSpec& spec, const Floats& values) {
    const auto output = OIIO::ImageOutput::create(name);
    ASSERT_TRUE(output && output->open(name, spec)) << OIIO::geterror();
    ASSERT_TRUE(output->write_image(OIIO::TypeDesc::FLOAT, values.data()));
    ASSERT_TRUE(output->close());
}

struct File {
    OIIO::ImageSpec spec;
    Floats values;
};

File readFile(const std::string& name) {
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    const auto input = OIIO::ImageInput::open(name, &config);
    EXPECT_TRUE(input) << name << OIIO::geterror();
    if (!input)
        return {};
    File file{input->spec(), {}};
    file.values.resize(file.spec.image_pixels() * std::size_t(file.spec.nchannels));
    EXPECT_TRUE(input->read_image(0, 0, 0, -1, OIIO::TypeDesc::FLOAT, file.values.data()));
    return file;
}

void expectNear(const Floats& values, const Floats& expected, float tolerance) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(values[i], expected[i], tolerance) << i;
}

class Conversions : public ProgramTest {
protected:
    Conversions() {
        write("copy.pbk",
              "<languageVersion : 1.0;>\nkernel Copy < namespace: \"n\"; version: 1; >\n"
              "{ input image4 src; output pixel4 dst;\n"
              "void evaluatePixel() { dst = sampleNearest(src, outCoord()); } }");
        write("both.pbk",
              "<languageVersion : 1.0;>\nkernel Both < namespace: \"n\"; version: 1; >\n"
              "{ input image4 a; input image4 b; output pixel4 dst; void evaluatePixel() {\n"
              "dst = sampleNearest(b, outCoord()) + 0.0 * sampleNearest(a, outCoord()); } }");
    }
    static File copy(const std::string& from, const std::string& to, const std::string& more = "") {
        const Result result = run("render copy.pbk -i " + from + " -o " + to + " " + more);
        result.expectSuccess();
        return readFile(to);
    }
};

} // namespace

// Pixels: half transparent, opaque, and a colour at alpha 0.
TEST_F(Conversions, AlphaHasTheConventionOfEachFormat) {
    const Floats straight = {0.8F, 0.4F, 0.2F, 0.6F, 1, 0.2F, 0, 1, 0.4F, 0.4F, 0.4F, 0};
    Floats premultiplied = straight, glow = straight;
    for (std::size_t i = 0; i < straight.size(); ++i)
        premultiplied[i] = i % 4 == 3 ? straight[i] : straight[i] * straight[i / 4 * 4 + 3];
    glow = premultiplied;
    glow[8] = glow[9] = glow[10] = 0.4F; // not 0 at alpha 0
    writeFile("s.png", specOf(3, 1, 4, OIIO::TypeDesc::UINT8), straight);
    writeFile("p.exr", specOf(3, 1, 4, OIIO::TypeDesc::FLOAT), glow);
    OIIO::ImageSpec associated(3, 1, 4, OIIO::TypeDesc::FLOAT);
    writeFile("p.tif", associated, premultiplied);
    const float step = 0.51F / 255;
    struct Case {
        std::string from, to, more;
        Floats expected;
        float tolerance;
    };
    const Case cases[] = {
        {"s.png", "a.exr", "", premultiplied, step},
        {"s.png", "a.png", "", straight, 0.01F * step},
        {"s.png", "a.tif", "", straight, 0.01F * step},
        {"p.exr", "b.exr", "", glow, 0}, // exact, with what alpha 0 hides
        {"p.exr", "b.png", "", straight, step},
        {"p.exr", "c.png", "--alpha straight --type uint8", straight, step},
        {"p.exr", "c.exr", "--alpha as-is", glow, 0},
        {"s.png", "d.exr", "--alpha as-is --depth 32", straight, step},
        {"s.png",
         "e.png",
         "--alpha premultiplied --depth 32 --type uint8",
         {0.8F, 0.4F, 0.2F, 0.6F, 1, 0.2F, 0, 1, 0, 0, 0, 0},
         step},
        {"p.tif", "f.png", "", {0.8F, 0.4F, 0.2F, 0.6F, 1, 0.2F, 0, 1, 0, 0, 0, 0}, step},
        {"p.tif", "g.tif", "", premultiplied, 0},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.from + " " + each.to + " " + each.more);
        expectNear(copy(each.from, each.to, each.more).values, each.expected, each.tolerance);
    }
    EXPECT_EQ(readFile("a.tif").spec.get_int_attribute("oiio:UnassociatedAlpha"), 1);
    EXPECT_EQ(readFile("g.tif").spec.get_int_attribute("oiio:UnassociatedAlpha"), 0);
    // The second picture gets the convention of the first.
    run("render both.pbk -i p.exr -i s.png -o h.exr").expectSuccess();
    expectNear(readFile("h.exr").values, premultiplied, step);
    run("render both.pbk -i s.png -i p.exr -o h.png --depth 32").expectSuccess();
    expectNear(readFile("h.png").values, straight, step);
}

TEST_F(Conversions, TypesAndCompressionsAreThoseOfTheFile) {
    Floats all(65536);
    std::iota(all.begin(), all.end(), 0.0F);
    for (float& value : all)
        value /= 65535;
    writeFile("all.tif", specOf(256, 256, 1, OIIO::TypeDesc::UINT16), all);
    OIIO::ImageSpec half = specOf(256, 256, 1, OIIO::TypeDesc::HALF);
    half.attribute("compression", "piz");
    half.channelnames = {"Z"};
    writeFile("half.exr", half, all);
    using OIIO::TypeDesc;
    const std::tuple<const char*, const char*, const char*, TypeDesc, const char*> cases[] = {
        {"all.tif", "a.tif", "--depth 32 --type uint16", TypeDesc::UINT16, "zip"},
        {"all.tif", "a.png", "--depth 32", TypeDesc::UINT16, ""},
        {"all.tif", "a.exr", "--type half --compression pxr24", TypeDesc::HALF, "pxr24"},
        {"all.tif", "b.tif", "--type float --compression lzw", TypeDesc::FLOAT, "lzw"},
        {"half.exr", "c.exr", "", TypeDesc::HALF, "piz"},
        {"half.exr", "d.exr", "--type float --compression none", TypeDesc::FLOAT, "none"},
        {"half.exr", "d.tif", "", TypeDesc::FLOAT, "zip"},
        {"half.exr", "d.png", "", TypeDesc::UINT16, ""},
    };
    for (const auto& [from, to, more, type, compression] : cases) {
        const File file = copy(from, to, more);
        SCOPED_TRACE(std::string(to) + more);
        EXPECT_EQ(file.spec.format, type);
        EXPECT_EQ(file.spec.get_string_attribute("compression"), compression);
        EXPECT_EQ(file.spec.nchannels, 1); // grey stays grey
    }
    EXPECT_EQ(readFile("a.tif").values, readFile("all.tif").values); // every value
    EXPECT_EQ(readFile("a.png").values, readFile("all.tif").values);
    EXPECT_EQ(readFile("c.exr").values, readFile("half.exr").values);
    EXPECT_THAT(readFile("c.exr").spec.channelnames, testing::ElementsAre("Z"));
    writeFile("colour.png", specOf(8, 8, 3, TypeDesc::UINT8), Floats(8 * 8 * 3, 0.5F));
    EXPECT_EQ(copy("colour.png", "dwa.exr", "--compression dwaa --quality 60")
                  .spec.get_float_attribute("openexr:dwaCompressionLevel"),
              60);
    const std::pair<const char*, const char*> wrong[] = {
        {"-o x.png --type half", "no pixels of that type"},
        {"-o x.exr --compression lzw", "it has none rle zip"},
        {"-o x.tif --compression zip --quality 10", "from 1 to 9"},
        {"-o x.exr --quality 5", "only for the compressions dwaa dwab"},
        {"-o x.jpg --quality 101", "from 1 to 100"},
        {"-o x.png --quality 5", "the format has no quality"},
        {"-o x.png --work-space nonsense", "no conversion from colour space"},
        {"-o all.tif --no-clobber", "it exists"},
        {"-o -", "--format"},
    };
    for (const auto& [more, text] : wrong)
        run(std::string("render copy.pbk -i all.tif ") + more).expectFailure(2, {text});
}

TEST_F(Conversions, MetadataWindowsAndColourSpacesAreKept) {
    OIIO::ImageSpec spec = specOf(8, 6, 3, OIIO::TypeDesc::HALF);
    spec.x = -2;
    spec.y = 3;
    spec.full_width = 20;
    spec.full_height = 10;
    spec.attribute("shotName", "a12");
    spec.attribute("PixelAspectRatio", 2.0F);
    const int timeCode[2] = {0x01020304, 0};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timeCode);
    const int rate[2] = {24000, 1001};
    spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    writeFile("w.exr", spec, Floats(8 * 6 * 3, 0.5F));
    const OIIO::ImageSpec kept = copy("w.exr", "k.exr").spec;
    EXPECT_EQ(std::tuple(kept.x, kept.y, kept.width, kept.height), std::tuple(-2, 3, 8, 6));
    EXPECT_EQ(std::tuple(kept.full_x, kept.full_y, kept.full_width, kept.full_height),
              std::tuple(0, 0, 20, 10));
    EXPECT_EQ(kept.nchannels, 3);
    EXPECT_EQ(kept.get_string_attribute("shotName"), "a12");
    EXPECT_EQ(kept.get_float_attribute("PixelAspectRatio"), 2);
    EXPECT_EQ(kept.get_string_attribute("smpte:TimeCode"),
              spec.get_string_attribute("smpte:TimeCode"));
    const OIIO::ImageSpec small = copy("w.exr", "s.exr", "--downsample 2").spec;
    EXPECT_EQ(std::tuple(small.x, small.y, small.width, small.height, small.full_width),
              std::tuple(-1, 1, 4, 3, 10));
    EXPECT_EQ(copy("w.exr", "k.png").spec.width, 20); // a format without windows
    EXPECT_EQ(readFile("k.png").values[(3 * 20) * 3], readFile("k.png").values[(4 * 20 + 5) * 3]);
    // sRGB pixels remain sRGB, also as floats.
    OIIO::ImageSpec png = specOf(2, 2, 3, OIIO::TypeDesc::UINT8);
    png.attribute("XResolution", 300.0F);
    png.attribute("YResolution", 300.0F);
    png.attribute("ResolutionUnit", "in");
    png.attribute("ImageDescription", "a text");
    writeFile("d.png", png, Floats(12, 0.5F));
    EXPECT_EQ(copy("d.png", "d.exr", "--depth 32").spec.get_string_attribute("oiio:ColorSpace"),
              "sRGB");
    const OIIO::ImageSpec again = copy("d.exr", "e.png").spec;
    EXPECT_EQ(again.get_string_attribute("oiio:ColorSpace"), "sRGB");
    EXPECT_NEAR(copy("d.png", "d2.png").spec.get_float_attribute("XResolution"), 300, 0.1);
    EXPECT_EQ(readFile("d2.png").spec.get_string_attribute("ImageDescription"), "a text");
    // The mean of 0 and 1 is 0.5 of the light, which is 0.735 in sRGB.
    Floats stripes(32 * 32 * 3);
    for (std::size_t i = 0; i < stripes.size(); ++i)
        stripes[i] = float(i / 3 % 2);
    writeFile("stripes.png", specOf(32, 32, 3, OIIO::TypeDesc::UINT8), stripes);
    const std::string half = "--downsample 2 --depth 32 --type uint8 ";
    const std::size_t middle = (8 * 16 + 8) * 3;
    EXPECT_NEAR(copy("stripes.png", "m.png", half + "--work-space linear").values[middle], 0.7354,
                1.0 / 255);
    EXPECT_NEAR(copy("stripes.png", "n.png", half).values[middle], 0.5, 1.0 / 255);
}

// Red is 1 in the file's first pixel only, of 3 by 2.
TEST_F(Conversions, OrientationIsApplied) {
    const std::tuple<int, int, std::size_t> cases[] = {{1, 3, 0}, {2, 3, 2}, {3, 3, 5}, {4, 3, 3},
                                                       {5, 2, 0}, {6, 2, 1}, {7, 2, 5}, {8, 2, 4}};
    for (const auto& [orientation, width, place] : cases) {
        OIIO::ImageSpec spec = specOf(3, 2, 3, OIIO::TypeDesc::UINT8);
        spec.attribute("Orientation", orientation);
        Floats values(18, 0);
        values[0] = 1;
        writeFile("o.tif", spec, values);
        const File file = copy("o.tif", "p.tif");
        EXPECT_EQ(file.spec.width, width) << orientation;
        EXPECT_EQ(file.spec.get_int_attribute("Orientation", 1), 1);
        EXPECT_EQ(file.values[place * 3], 1) << orientation;
    }
}

TEST_F(Conversions, LayersPipesAndNotes) {
    OIIO::ImageSpec spec = specOf(2, 1, 7, OIIO::TypeDesc::FLOAT);
    spec.channelnames = {"R", "G", "B", "Z", "glow.R", "glow.G", "glow.B"};
    writeFile("layers.exr", spec, {1, 2, 3, 9, 4, 5, 6, 1, 2, 3, 9, 4, 5, 6});
    const Result all = run("render copy.pbk -i layers.exr -o a.exr");
    all.expectSuccess();
    EXPECT_THAT(all.err, HasSubstr("the channels Z glow.R glow.G glow.B are left out; --channels"));
    EXPECT_EQ(readFile("a.exr").values, (Floats{1, 2, 3, 1, 2, 3}));
    EXPECT_EQ(copy("layers.exr", "b.exr", "--channels glow").values, (Floats{4, 5, 6, 4, 5, 6}));
    run("render copy.pbk -i layers.exr -o old.png --channels haze")
        .expectFailure(4, {"'haze.R'", "the layers are glow"});
    run("render copy.pbk -i - -o - --format exr <b.exr | cat >d.exr; true").expectSuccess();
    EXPECT_EQ(readFile("d.exr").values, (Floats{4, 5, 6, 4, 5, 6}));
    writeFile("alpha.png", specOf(2, 1, 4, OIIO::TypeDesc::UINT8), {1, 1, 1, 0.5F, 1, 1, 1, 1});
    EXPECT_THAT(run("render copy.pbk -i alpha.png -o a.jpg").err,
                HasSubstr("no alpha; it is dropped"));
    EXPECT_EQ(run("render copy.pbk -i a.jpg -o b.jpg").err, "");
    writeFile("small.png", specOf(1, 1, 3, OIIO::TypeDesc::UINT8), {1, 1, 1});
    EXPECT_THAT(run("render both.pbk -i alpha.png -i small.png -o e.png").err,
                HasSubstr("small.png has 1 by 1 pixels, the layer 2 by 1"));
    EXPECT_THAT(run("render both.pbk -i alpha.png -o e.png").err,
                HasSubstr("a missing one is transparent"));
}
