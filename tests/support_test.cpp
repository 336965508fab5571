#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <set>
#include <string>

#include "hostkit/suites.h"
#include "support/jst.h"
#include "support/numbers.h"
#include "support/report.h"
#include "support/utf.h"
#include "tests/support/comma_locale.h"
#include "tests/support/running_command.h"

using namespace std::string_literals;
namespace memory = hostkit::memory;
namespace suites = hostkit::suites;

namespace {

using JstString = _JST::String<aeAllocator>;
using JstArray = _JST::Array<aeAllocator>;

class Support : public RunningCommand {};

// The `long` that the work throws; 0 when it ends well.
long thrownBy(const auto& work) {
    try {
        work();
    } catch (long error) {
        return error;
    }
    return 0;
}

std::vector<CommandScope*> scopesFromNewest() {
    std::vector<CommandScope*> scopes;
    for (CommandScope* scope = currentScope; scope != nullptr; scope = scope->older) {
        EXPECT_EQ(scope->newer, scopes.empty() ? nullptr : scopes.back());
        scopes.push_back(scope);
    }
    return scopes;
}

std::string heard; // from report handlers and from a host's memory

} // namespace

TEST(CommandScopes, LeaveTheChainFromAnyPlace) {
    std::array<std::size_t, 3> order = {0, 1, 2};
    do {
        std::array<hostkit::Host, 3> hosts;
        std::vector<std::unique_ptr<CommandScope>> scopes;
        std::vector<CommandScope*> chain;
        for (int i = 0; i < 3; ++i) {
            scopes.push_back(std::make_unique<CommandScope>(i, 20 + i, hosts[i].inData()));
            chain.insert(chain.begin(), scopes.back().get());
        }
        for (const std::size_t leaving : order) {
            EXPECT_EQ(scopesFromNewest(), chain);
            // Whoever is newest now, its record and its suites are what all code sees.
            EXPECT_EQ(currentInData(), hosts[chain[0]->selector].inData());
            EXPECT_EQ(currentSuites(), &chain[0]->context->suites);
            std::erase(chain, scopes[leaving].get());
            scopes[leaving].reset();
        }
        EXPECT_EQ(currentScope, nullptr);
        EXPECT_EQ(currentPluginId, 22) << "the newest command's id stays behind";
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(memory::liveHandles(), 0U);
    EXPECT_EQ(memory::takeFaults(), std::vector<std::string>());
}

TEST_F(Support, AScopeWithoutContextHidesTheOuterHeap) {
    void* outer = allocate(8);
    for (const bool hasRecord : {false, true}) {
        memory::setHandlesLeft(hasRecord ? 0 : memory::noLimit);
        const CommandScope scope(1, 0, hasRecord ? host.inData() : nullptr);
        memory::setHandlesLeft(memory::noLimit);
        EXPECT_EQ(currentInData(), nullptr);
        EXPECT_EQ(currentSuites(), nullptr);
        EXPECT_EQ(allocate(8), nullptr);
        EXPECT_EQ(allocateAligned(8, 16), nullptr);
        EXPECT_EQ(handleSize(handleOf(outer)), 0);
        release(outer); // stays: the release below must find it alive
    }
    EXPECT_EQ(currentInData(), host.inData());
    release(outer);
}

TEST(SuiteTables, EachPairOfNameAndVersionHasOneSlot) {
    std::set<std::pair<std::string, int>> pairs;
    for (const SuiteSlot& slot : suiteSlots)
        EXPECT_TRUE(slot.name == nullptr || pairs.emplace(slot.name, slot.version).second)
            << slot.name << slot.version;
    EXPECT_EQ(pairs.size(), 99U);
    EXPECT_EQ(suiteSlotIndex("AEGP Utility Suite", 11), 109U); // the last one
    EXPECT_EQ(suiteSlotIndex("PF World Suite", 2), suiteSlotCount);
}

TEST(SuiteTables, LendOnceAndGiveBackUnderTheSamePair) {
    suites::withdrawAll();
    for (const SuiteSlot& slot : suiteSlots) // a suite is known by the slot that it is for
        if (slot.name != nullptr)
            suites::offer(slot.name, slot.version, &slot);
    std::vector<const void*> borrowed;
    {
        SuiteTable table(&suites::basicSuite());
        EXPECT_TRUE(suites::loans().empty()) << "suites are taken on first use";
        for (int round = 0; round < 2; ++round)
            borrowed = {table.dynamicStreamSuite5(), table.effectSuite3(), table.keyframeSuite4(),
                        table.interfaceSuite1(),     table.streamSuite9(), table.utilitySuite11(),
                        table.paramUtilsSuite1(),    table.worldSuite1()};
    }
    const std::vector<std::pair<std::string, int>> reached = {
        {"AEGP Dynamic Stream Suite", 5}, {"AEGP Effect Suite", 3}, {"AEGP Keyframe Suite", 4},
        {"AEGP PF Interface Suite", 1},   {"AEGP Stream Suite", 9}, {"AEGP Utility Suite", 11},
        {"PF Param Utils Suite", 1},      {"PF World Suite", 1},
    };
    const std::vector<suites::Loan> loans = suites::loans();
    ASSERT_EQ(loans.size(), reached.size());
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const auto& [name, version] = reached[i];
        EXPECT_EQ(std::pair(loans[i].name, loans[i].version), reached[i]);
        EXPECT_EQ(borrowed[i], &suiteSlots[suiteSlotIndex(name, version)]) << name;
        EXPECT_EQ(std::pair(loans[i].lent, loans[i].returned), std::pair(1UL, 1UL)) << name;
    }
    EXPECT_EQ(suites::takeFaults(), std::vector<std::string>());
    suites::withdrawAll();
}

TEST(SuiteTables, AMissingSuiteEndsTheCommandAndTheOthersGoBack) {
    const int suite = 0;
    suites::withdrawAll();
    suites::offer("AEGP Stream Suite", 9, &suite);
    suites::offer("AEGP Effect Suite", 2, &suite); // another version is no replacement
    suites::offer("PF World Suite", 1, nullptr);   // lent with success, but there is none
    const auto borrow = [](auto accessor) {
        SuiteTable table(&suites::basicSuite());
        table.streamSuite9();
        (table.*accessor)();
    };
    EXPECT_EQ(thrownBy([&] { borrow(&SuiteTable::effectSuite3); }), 516);
    EXPECT_EQ(thrownBy([&] { borrow(&SuiteTable::worldSuite1); }), 516);
    const suites::Loan stream = suites::loans()[0];
    EXPECT_EQ(std::pair(stream.lent, stream.returned), std::pair(2UL, 2UL)) << stream.name;
    EXPECT_EQ(suites::takeFaults(), std::vector<std::string>());
    suites::withdrawAll();

    hostkit::Host bare;
    bare.inData()->pica_basicP = nullptr;
    EXPECT_EQ(thrownBy([&] { CommandScope(1, 0, bare.inData()); }), 516);
    EXPECT_EQ(currentScope, nullptr);
    EXPECT_EQ(memory::liveHandles(), 0U);
}

TEST(Heap, TalksToTheHostOfTheRunningCommand) {
    EXPECT_EQ(allocate(1), nullptr) << "no command runs";
    hostkit::Host first;
    auto scope = std::make_unique<CommandScope>(1, 0, first.inData());
    void* block = allocate(0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(handleSize(handleOf(block)), std::int64_t{sizeof(void*)});
    EXPECT_EQ(*handleOf(block), static_cast<void**>(block) - 1);
    scope.reset();
    release(block); // nobody to give it to
    EXPECT_EQ(memory::liveHandles(), 1U);

    PF_UtilCallbacks utils = memory::callbacks();
    utils.host_unlock_handle = [](PF_Handle) { heard += "unlock "; };
    utils.host_dispose_handle = [](PF_Handle handle) {
        heard += "dispose ";
        memory::callbacks().host_dispose_handle(handle);
    };
    hostkit::Host second;
    second.inData()->utils = &utils;
    scope = std::make_unique<CommandScope>(2, 0, second.inData());
    heard.clear();
    release(nullptr);
    EXPECT_EQ(heard, "");
    release(block);
    EXPECT_EQ(heard, "unlock dispose ");
    scope.reset();
    EXPECT_EQ(heard, "unlock dispose dispose ") << "the context goes while it is locked";
    EXPECT_EQ(memory::liveHandles(), 0U);
    EXPECT_EQ(memory::takeFaults(), std::vector<std::string>());
}

TEST_F(Support, AlignedBlocksFitAndOverflowGivesNothing) {
    for (std::size_t alignment = 1; alignment <= 4096; alignment *= 2)
        for (const std::size_t size : {0, 1, 24, 1000}) {
            void* block = allocateAligned(size, alignment);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0U);
            std::memset(block, 0x5A, size); // AddressSanitizer watches the end
            releaseAligned(block);
        }
    releaseAligned(nullptr);
    const std::uint64_t made = memory::handlesMade();
    for (std::size_t less = 0; less < 70; ++less)
        EXPECT_EQ(allocateAligned(SIZE_MAX - less, 64), nullptr) << less;
    EXPECT_EQ(allocate(SIZE_MAX - sizeof(void*) + 1), nullptr);
    EXPECT_EQ(thrownBy([] { aeAllocator<std::int64_t>().allocate(SIZE_MAX / 8 + 2); }), 4);
    EXPECT_EQ(memory::handlesMade(), made);
}

TEST_F(Support, LackOfMemoryEndsTheCommandAndLeavesNothing) {
    struct Counted : aeBase {
        explicit Counted(int& count) : alive(++count) {}
        ~Counted() override { --alive; }
        int& alive;
    };
    int alive = 0;
    const std::uint64_t allocations = failEveryAllocation([&] {
        const auto object = makeObject<Counted>(alive);
        EXPECT_EQ(*handleOf(object.get()), reinterpret_cast<void**>(object.get()) - 1);
        HostVector<NarrowString> texts;
        for (int i = 0; i < 3; ++i)
            texts.push_back(concatenate(NarrowString(40, 'a'), "tail"));
        toNarrow(toWide(texts.back()));
        JstString("a text that is too long for the object itself, piece").split(", ").join("-");
    });
    EXPECT_GT(allocations, 10U);
    memory::setHandlesLeft(0);
    EXPECT_EQ(new Counted(alive), nullptr);
    EXPECT_EQ(alive, 0) << "a constructor ran without an object, or a destructor did not";
}

TEST_F(Support, TextsAreDividedAndJoined) {
    const std::array<const char*, 3> splits[] = {
        {"a,b", ",", "a|b"}, {",a", ",", "|a"},   {"a,", ",", "a|"},
        {"", ",", ""},       {",,", ",", "||"},   {"abc", ",", "abc"},
        {"abc", "", "abc"},  {"---", "--", "|-"}, {"a--b-c", "--", "a|b-c"},
    };
    for (const auto& [text, delimiter, joined] : splits) {
        const JstArray pieces = JstString(text).split(delimiter);
        EXPECT_EQ(pieces.join("|").text(), joined);
        EXPECT_EQ(pieces.join(delimiter).text(), text);
    }
    EXPECT_EQ(JstString("").split(",").size(), 1U);
    const std::tuple<std::uint32_t, std::uint32_t, const char*> parts[] = {
        {2, 0, "cd"}, {3, 2, ""},     {0, 0, "abcd"},      {1, 3, "bc"},
        {4, 0, ""},   {1, 99, "bcd"}, {99, UINT32_MAX, ""}};
    for (const auto& [from, to, part] : parts)
        EXPECT_EQ(JstString("ab").append("cd").substring(from, to).text(), part) << from;
    JstArray texts;
    texts.push("an element that its own array takes in once more");
    for (int i = 0; i < 9; ++i) // grows under the argument's feet
        texts.push(texts[0]);
    EXPECT_EQ(texts[9].text(), texts[0].text());
    EXPECT_EQ(std::pair(texts.type(), texts[0].type()), std::pair(1, 3));
}

TEST_F(Support, TextIsConvertedAndReadsNoFurtherThanItsEnd) {
    const std::pair<std::string, std::u16string> toUtf16[] = {
        {"a\0b"s, u"a\0b"s},
        {"\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf", u"\x80\x7ff\x800\xffff"},
        {"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", u"\xd800\xdc00\xdbff\xdfff"},
        {"a\x80\xbfz\xfe\xff!", u"az!"}, // none of these begins a sequence
        {"a\xc3", u"a"},                 // cut off
        {"\xf0\x9fz", u"z"},
        {"\xfd\xbf\xbf\xbf\xbf", u""},
        {"\xc3z", u"\xfa"},                            // what follows is taken as it comes
        {"\xf8\x88\x80\x80\x80", u"\xdfc0\xdc00"},     // 5 bytes for 2 to the power of 21
        {"\xfc\x84\x80\x80\x80\x80", u"\xd7c0\xdc00"}, // 6 bytes for 2 to the power of 26
    };
    for (const auto& [narrow, wide] : toUtf16) {
        // On the heap and full to the last byte, so that AddressSanitizer sees one read too many.
        const std::vector<char> bytes(narrow.begin(), narrow.end());
        EXPECT_EQ(std::u16string_view(toWide({bytes.data(), bytes.size()})), wide) << narrow;
    }
    const std::pair<std::u16string, std::string> toUtf8[] = {
        {u"a\0\x80\x7ff\x800\xffff"s, "a\0\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf"s},
        {u"\xd800\xdc00\xdbff\xdfff", "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"},
        {u"\xd83dz!", "\xf0\x91\xa1\xba!"}, // the next unit is the second half, whatever it is
        {u"\xdc00\x61", "\xf4\x82\x91\xa1"},
        {u"a\xd83d", "a\xf0\x91\xa0\x80"},
    };
    for (const auto& [wide, narrow] : toUtf8) {
        const std::vector<char16_t> units(wide.begin(), wide.end());
        EXPECT_EQ(std::string_view(toNarrow({units.data(), units.size()})), narrow);
    }
    for (int bits = 0; bits < 31; ++bits)
        for (const std::uint32_t code : {1U << bits, (2U << bits) - 1}) {
            std::array<char, 7> bytes{};
            const int length = bits < 7 ? 1 : bits < 11 ? 2 : (bits - 1) / 5 + 1;
            EXPECT_EQ(utf8Encode(code, nullptr), length) << code;
            EXPECT_EQ(utf8Encode(code, bytes.data()), length);
            EXPECT_EQ(utf8Decode(bytes.data()), code);
        }
}

TEST(Reports, ReachTheHandlerOfTheirChannel) {
    heard.clear();
    setReportHandler([](const char* text) { heard += "info "s + text; }, ChannelInfo);
    for (const int unknown : {-1, 3, 1 << 30})
        setReportHandler([](const char* text) { heard += "unknown "s + text; }, unknown);
    for (const int channel : {ChannelTrace, ChannelInfo, ChannelErrorLog, -1, 3, 1 << 30})
        reportMessage("100%s;", channel);
    setReportHandler(nullptr, ChannelInfo);
    reportMessage("too late", ChannelInfo);
    EXPECT_EQ(heard, "info 100%s;");
}

TEST(Reports, DebugOutputIsCutAndOnlyThereWhenWanted) {
    const std::string longest(1023, 'x');
    const auto printed = [](const char* wish, const char* format, auto... arguments) {
        setenv("TVELMARONDINE_DEBUG", wish, 1);
        testing::internal::CaptureStderr();
        _printf(format, arguments...);
        unsetenv("TVELMARONDINE_DEBUG");
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(printed("1", longest.c_str(), ""), longest);
    EXPECT_EQ(printed("1", (longest + "x").c_str(), ""), "_printf error ;Message too large\n");
    EXPECT_EQ(printed("1", "%s%s", longest.c_str(), "yz"), longest);
    EXPECT_EQ(printed("1", "%d \xc3\xa9 %s", 7, "100%"), "7 \xc3\xa9 100%");
    EXPECT_EQ(printed("", "%d", 7), "");
}

TEST(Numbers, HaveAPointInEveryLocaleAndStayInRange) {
    using Int = std::numeric_limits<std::int32_t>;
    constexpr float largest = std::numeric_limits<float>::max();
    const CommaLocale locale;
    const auto scan = [](const char* text, auto scanNumber, auto value) { // value and what is left
        const char* at = text;
        const bool isFound = scanNumber(at, value);
        EXPECT_EQ(isFound, at != text) << text;
        return std::pair(value, std::string(at));
    };
    EXPECT_EQ(scan(" \t\n-12,5", scanInteger, 3), std::pair(-12, ",5"s));
    EXPECT_EQ(scan("2147483648", scanInteger, 3), std::pair(Int::max(), ""s));
    EXPECT_EQ(scan("-99999999999999999999x", scanInteger, 3), std::pair(Int::min(), "x"s));
    EXPECT_EQ(scan(" -", scanInteger, 3), std::pair(3, " -"s));
    EXPECT_EQ(scan(" -1.5e1,5", scanFloat, 3.0F), std::pair(-15.0F, ",5"s));
    EXPECT_EQ(scan("-1e99", scanFloat, 3.0F), std::pair(-largest, ""s));
    EXPECT_EQ(scan("1e-99", scanFloat, 3.0F), std::pair(0.0F, ""s));
    EXPECT_EQ(scan(",5", scanFloat, 3.0F), std::pair(3.0F, ",5"s));
    EXPECT_EQ(leadingInteger("12.9"), 12);
    EXPECT_EQ(leadingInteger("2147483648", true), Int::min());
    EXPECT_EQ(leadingInteger("99999999999999999999"), Int::max());
    EXPECT_EQ(leadingInteger("x1"), 0);
    EXPECT_EQ(leadingFloat("1.5e3"), 1.5F);
    EXPECT_EQ(leadingFloat("1" + std::string(99, '0') + ".5"), largest);
    EXPECT_EQ(leadingFloat("0." + std::string(99, '0') + "1"), 0.0F);
    EXPECT_EQ(leadingFloat(".x"), 0.0F);
}
