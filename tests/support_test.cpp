#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "hostkit/calls/ledger.h"
#include "support/jst.h"
#include "support/numbers.h"
#include "support/report.h"
#include "support/utf.h"
#include "tests/support/comma_locale.h"
#include "tests/support/debug_output.h"
#include "tests/support/running_command.h"

using namespace std::string_literals;
namespace ledger = hostkit::ledger;
namespace memory = hostkit::memory;

namespace {

using JstString = _JST::String<aeAllocator>;
using JstArray = _JST::Array<aeAllocator>;

class Support : public RunningCommand {};

// The `long` that the work throws; 0 if it throws nothing.
long thrownBy(const auto& work) {
    try {
        work();
    } catch (long error) {
        return error;
    }
    return 0;
}

std::string recorded; // filled by report handlers and by a host's memory callbacks

} // namespace

TEST_F(Support, AScopeWithoutContextHidesTheOuterHeap) {
    void* outer = allocate(8);
    for (const bool hasRecord : {false, true}) {
        memory::setHandlesLeft(hasRecord ? 0 : memory::noLimit);
        const CommandScope scope(1, 0, hasRecord ? host.inData() : nullptr);
        memory::setHandlesLeft(memory::noLimit);
        EXPECT_TRUE(currentInData() == nullptr && currentSuites() == nullptr);
        EXPECT_TRUE(allocate(8) == nullptr && allocateAligned(8, 16) == nullptr);
        EXPECT_EQ(handleSize(handleOf(outer)), 0);
        release(outer); // still allocated when it is released below
    }
    EXPECT_EQ(currentInData(), host.inData());
    release(outer);
}

TEST(Heap, UsesTheHostOfTheRunningCommand) {
    EXPECT_EQ(allocate(1), nullptr) << "no command runs";
    hostkit::Host host;
    auto scope = std::make_unique<CommandScope>(1, 0, host.inData());
    void* block = allocate(0);
    ASSERT_NE(block, nullptr);
    scope.reset();
    release(block); // no host to return it to
    EXPECT_EQ(memory::liveHandles(), 1U);

    recorded.clear();
    PF_UtilCallbacks utils = memory::callbacks();
    utils.host_unlock_handle = [](PF_Handle) { recorded += "unlock "; };
    utils.host_dispose_handle = [](PF_Handle handle) {
        recorded += "dispose ";
        memory::callbacks().host_dispose_handle(handle);
    };
    host.inData()->utils = &utils;
    scope = std::make_unique<CommandScope>(2, 0, host.inData());
    release(nullptr);
    release(block);
    EXPECT_EQ(recorded, "unlock dispose ");
    scope.reset();
    EXPECT_EQ(memory::liveHandles(), 0U);
    EXPECT_EQ(ledger::takeFaults(), std::vector<std::string>());
}

TEST(Heap, DisposesOfAHandleThatCannotBeLocked) {
    hostkit::Host host;
    PF_UtilCallbacks utils = memory::callbacks();
    host.inData()->utils = &utils;
    const auto refuseToLock = [](PF_Handle) -> void* { return nullptr; };
    {
        const CommandScope scope(1, 0, host.inData());
        utils.host_lock_handle = refuseToLock;
        EXPECT_EQ(allocate(8), nullptr);
        const CommandScope inner(2, 0, host.inData());
        EXPECT_EQ(inner.context, nullptr);
        EXPECT_EQ(memory::liveHandles(), 1U) << "more than the outer command's context";
    }
    EXPECT_EQ(memory::liveHandles(), 0U);
    EXPECT_EQ(ledger::takeFaults(), std::vector<std::string>());
}

TEST_F(Support, AlignedBlocksAreLargeEnoughAndOverflowFails) {
    for (std::size_t alignment = 1; alignment <= 4096; alignment *= 2)
        for (const std::size_t size : {0, 1, 24, 1000}) {
            void* block = allocateAligned(size, alignment);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0U);
            std::memset(block, 0x5A, size); // AddressSanitizer detects a write past the end
            releaseAligned(block);
        }
    releaseAligned(nullptr);
    const std::uint64_t made = memory::handlesAllocated();
    for (std::size_t less = 0; less < 70; ++less)
        EXPECT_EQ(allocateAligned(SIZE_MAX - less, 64), nullptr) << less;
    EXPECT_EQ(allocate(SIZE_MAX - sizeof(void*) + 1), nullptr);
    EXPECT_EQ(thrownBy([] { aeAllocator<void*>().allocate(SIZE_MAX / sizeof(void*) + 2); }), 4);
    EXPECT_EQ(memory::handlesAllocated(), made);
}

TEST_F(Support, WithoutMemoryNoObjectIsCreated) {
    struct Counted : aeBase {
        explicit Counted(int& count) : liveObjects(++count) {}
        ~Counted() override { --liveObjects; }
        int& liveObjects;
    };
    int liveObjects = 0;
    {
        const auto object = makeObject<Counted>(liveObjects);
        EXPECT_EQ(*handleOf(object.get()), reinterpret_cast<void**>(object.get()) - 1);
    }
    memory::setHandlesLeft(0);
    EXPECT_EQ(new Counted(liveObjects), nullptr);
    EXPECT_EQ(liveObjects, 0) << "a constructor ran without an object, or a destructor did not";
}

TEST_F(Support, SplitsAndJoinsTexts) {
    const std::array<const char*, 3> splits[] = {
        {",a,", ",", "|a|"}, {"", ",", ""}, {"abc", "", "abc"}, {"a---b-c", "--", "a|-b-c"}};
    for (const auto& [text, delimiter, joined] : splits) {
        const JstArray pieces = JstString(text).split(delimiter);
        EXPECT_EQ(pieces.join("|").text(), joined);
        EXPECT_EQ(pieces.join(delimiter).text(), text);
    }
    EXPECT_EQ(JstString("").split(",").size(), 1U);
    const std::tuple<std::uint32_t, std::uint32_t, const char*> parts[] = {
        {0, 0, "abcd"}, {2, 0, "cd"}, {1, 3, "bc"}, {3, 9, "d"},
        {2, 2, ""},     {3, 2, ""},   {9, 0, ""}};
    for (const auto& [from, to, part] : parts)
        EXPECT_EQ(JstString("abcd").substring(from, to).text(), part) << from << ", " << to;
    EXPECT_EQ(JstArray().type() * 10 + JstString().type(), 13);
    JstArray texts;
    texts.push("an element that its own array takes in once more");
    for (int i = 0; i < 9; ++i) // the argument is an element of the array that grows
        texts.push(texts[0]);
    EXPECT_EQ(texts[9].text(), texts[0].text());
}

TEST_F(Support, ConvertsTextWithoutReadingPastItsEnd) {
    const std::pair<std::string, std::u16string> bothWays[] = {
        {"a\0b"s, u"a\0b"s},
        {"\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf", u"\x80\x7ff\x800\xffff"},
        {"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", u"\xd800\xdc00\xdbff\xdfff"},
    };
    for (const auto& [narrow, wide] : bothWays) {
        EXPECT_EQ(std::u16string_view(toWide(narrow)), wide) << narrow;
        EXPECT_EQ(std::string_view(toNarrow(wide)), narrow);
    }
    // Allocated on the heap with the exact size, so that AddressSanitizer detects a read past the
    // end.
    const std::pair<std::vector<char>, std::u16string> toUtf16[] = {
        {{'a', '\x80', '\xbf', 'z', '\xfe', '!'}, u"az!"}, // none of these starts a sequence
        {{'a', '\xc3'}, u"a"},                             // truncated
        {{'\xc3', 'z'}, u"\xfa"},                          // the second byte is not checked
        {{'\xf8', '\x88', '\x80', '\x80', '\x80'}, u"\xdfc0\xdc00"}, // 2 to the power of 21
    };
    for (const auto& [bytes, wide] : toUtf16)
        EXPECT_EQ(std::u16string_view(toWide({bytes.data(), bytes.size()})), wide);
    const std::pair<std::vector<char16_t>, std::string> toUtf8[] = {
        {{u'\xd83d', 'z', '!'}, "\xf0\x91\xa1\xba!"}, // any next unit is the second half
        {{'a', u'\xd83d'}, "a\xf0\x91\xa0\x80"},
    };
    for (const auto& [units, narrow] : toUtf8)
        EXPECT_EQ(std::string_view(toNarrow({units.data(), units.size()})), narrow);
}

TEST_F(Support, SequencesHaveTheLengthThatTheirLeadByteAnnounces) {
    const std::array<int, 3> leads[] = {// from, to, length
                                        {0, 127, 1},   {128, 191, 0}, {192, 223, 2},
                                        {224, 239, 3}, {240, 247, 4}, {248, 251, 5},
                                        {252, 253, 6}, {254, 255, -1}};
    for (const auto& [from, to, length] : leads)
        for (int lead = from; lead <= to; ++lead)
            EXPECT_EQ(utf8SequenceLength(static_cast<unsigned char>(lead)), length) << lead;
    // The last code of each length, and the first of the next with its bytes.
    const std::pair<std::uint32_t, std::string> codes[] = {
        {0x7F, "\x7f"},
        {0x80, "\xc2\x80"},
        {0x800, "\xe0\xa0\x80"},
        {0x10000, "\xf0\x90\x80\x80"},
        {0x200000, "\xf8\x88\x80\x80\x80"},
        {0x4000000, "\xfc\x84\x80\x80\x80\x80"},
        {0x7FFFFFFF, "\xfd\xbf\xbf\xbf\xbf\xbf"}};
    for (const auto& [code, bytes] : codes) {
        std::array<char, 6> buffer{};
        const auto length = static_cast<int>(bytes.size());
        EXPECT_EQ(utf8Encode(code, buffer.data()), length) << code;
        EXPECT_EQ(std::string(buffer.data(), bytes.size()), bytes);
        EXPECT_EQ(utf8Encode(code, nullptr), length) << code;
        EXPECT_EQ(utf8Decode(bytes), code);
        const bool isFirstOfItsLength = code >= 0x80 && code < 0x7FFFFFFF;
        EXPECT_EQ(utf8Encode(code - 1, nullptr), isFirstOfItsLength ? length - 1 : length) << code;
    }
}

TEST(Reports, ArePassedToTheHandlerOfTheirChannel) {
    recorded.clear();
    setReportHandler([](const char* text) { recorded += "info "s + text; }, ChannelInfo);
    for (const int unknown : {-1, 3, 1 << 30})
        setReportHandler([](const char* text) { recorded += "unknown "s + text; }, unknown);
    for (const int channel : {ChannelTrace, ChannelInfo, ChannelErrorLog, -1, 3, 1 << 30})
        reportMessage("100%s;", channel);
    setReportHandler(nullptr, ChannelInfo);
    reportMessage("too late", ChannelInfo);
    EXPECT_EQ(recorded, "info 100%s;");
}

TEST(Reports, DebugOutputIsCutAndOptional) {
    const std::string longest(1023, 'x');
    const auto printed = [](const char* format, auto... arguments) {
        return debugOutputOf([&] { _printf(format, arguments...); });
    };
    EXPECT_EQ(printed(longest.c_str(), ""), longest);
    EXPECT_EQ(printed((longest + "x").c_str(), ""), "_printf error ;Message too large\n");
    EXPECT_EQ(printed("%s\n", "caf\u00e9"), "caf\u00e9\n");
    testing::internal::CaptureStderr();
    _printf("%d", 7); // without a debugger
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Numbers, UseAPointInEveryLocaleAndAreClamped) {
    constexpr std::int32_t largestInteger = std::numeric_limits<std::int32_t>::max();
    constexpr float largest = std::numeric_limits<float>::max();
    const CommaLocale locale;
    const auto scan = [](const char* text, auto scanNumber, auto value) {
        const bool isFound = scanNumber(text, value);
        return std::tuple(isFound, value, std::string(text)); // and the rest of the text
    };
    EXPECT_EQ(scan(" \t\n-12,5", scanInteger, 3), std::tuple(true, -12, ",5"s));
    EXPECT_EQ(scan("2147483648x", scanInteger, 3), std::tuple(true, largestInteger, "x"s));
    EXPECT_EQ(scan(" -", scanInteger, 3), std::tuple(false, 3, " -"s));
    EXPECT_EQ(scan(" -1.5e1,5", scanFloat, 3.0F), std::tuple(true, -15.0F, ",5"s));
    EXPECT_EQ(scan("-1e99", scanFloat, 3.0F), std::tuple(true, -largest, ""s));
    EXPECT_EQ(scan(",5", scanFloat, 3.0F), std::tuple(false, 3.0F, ",5"s));
    EXPECT_EQ(leadingInteger("2147483648", true), -largestInteger - 1);
    EXPECT_EQ(leadingInteger("99999999999999999999"), largestInteger);
    EXPECT_EQ(leadingFloat("0." + std::string(99, '0') + "1"), 0.0F);
    // Each hexadecimal digit shifts by four bits.
    const std::string tiny = "0x." + std::string(99, '0') + "1p130";
    EXPECT_EQ(scan(tiny.c_str(), scanFloat, 3.0F), std::tuple(true, 0.0F, ""s));
}

// Texts that are numbers or nearly so, the same on every platform.
class NumberTexts {
public:
    NumberTexts() {
        std::istringstream list(
            "0|1|9|5|17|123456789|16777217|000000000000|.|.|e|E+|e-|e38|e-45|e99|-|+| |\t\n|0x|0X1|"
            "aF|p|p-3|P+130|inf|INFINITY|nan|NaN(a_1)|,|3.4028235|3.40282357|1.4012985|"
            "7006492321e-55");
        for (std::string piece; std::getline(list, piece, '|');)
            pieces_.push_back(piece);
    }
    std::string next() {
        std::string text;
        while (text.empty() || draw(6) != 0)
            text += pieces_[draw(pieces_.size())];
        return text;
    }

private:
    std::size_t draw(std::size_t count) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::size_t>(state_ >> 33) % count;
    }

    std::vector<std::string> pieces_;
    std::uint64_t state_ = 13;
};

TEST(Numbers, AreScannedAlikeOnEveryPlatform) {
    NumberTexts texts;
    std::uint32_t sum = 2166136261U;
    for (int i = 0; i < 1000000; ++i) {
        const std::string text = texts.next();
        const char* rest = text.c_str();
        float value = 0.5F;
        const bool isFound = scanFloat(rest, value);
        const auto used = static_cast<std::uint32_t>(rest - text.c_str());
        ASSERT_EQ(isFound, used > 0) << text;
#ifndef _WIN32 // compared with the C library's scan, which has the same rules in the C locale
        char* end = nullptr;
        const float wanted = std::strtof(text.c_str(), &end);
        constexpr float largest = std::numeric_limits<float>::max();
        ASSERT_EQ(used, end - text.c_str()) << text;
        ASSERT_TRUE(!isFound || (std::isnan(wanted) && std::isnan(value)) ||
                    std::bit_cast<std::uint32_t>(value) ==
                        std::bit_cast<std::uint32_t>(std::clamp(wanted, -largest, largest)))
            << text << ": " << value << ", not " << wanted;
#endif
        std::int32_t integer = 3;
        const char* restOfInteger = text.c_str();
        scanInteger(restOfInteger, integer);
        for (const std::uint32_t part :
             {used, std::isnan(value) ? 1U : std::bit_cast<std::uint32_t>(value),
              static_cast<std::uint32_t>(restOfInteger - text.c_str()),
              static_cast<std::uint32_t>(integer), static_cast<std::uint32_t>(leadingInteger(text)),
              std::bit_cast<std::uint32_t>(leadingFloat(text))})
            sum = (sum ^ part) * 16777619U;
    }
    EXPECT_EQ(sum, 561047940U);
}
