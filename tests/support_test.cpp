#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <set>
#include <string>

#include "host/command_scope.h"
#include "hostkit/suites.h"
#include "support/jst.h"
#include "support/numbers.h"
#include "support/report.h"
#include "support/text.h"
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

// A host of its own that writes down the calls to its memory.
std::string calls;
class SpiedHost : public hostkit::Host {
public:
    SpiedHost() {
        static PF_UtilCallbacks spy = {
            [](A_u_longlong size) {
                calls += "new" + std::to_string(size) + " ";
                return lastHandle = memory::callbacks().host_new_handle(size);
            },
            [](PF_Handle handle) {
                calls += "lock ";
                return memory::callbacks().host_lock_handle(handle);
            },
            [](PF_Handle handle) {
                calls += "unlock ";
                memory::callbacks().host_unlock_handle(handle);
            },
            [](PF_Handle handle) {
                calls += "dispose ";
                memory::callbacks().host_dispose_handle(handle);
            },
            memory::callbacks().host_get_handle_size};
        inData()->utils = &spy;
        calls.clear();
    }
    static inline PF_Handle lastHandle = nullptr;
};

} // namespace

TEST(CommandScopes, LeaveTheChainFromAnyPlace) {
    std::array<int, 3> order = {0, 1, 2};
    do {
        std::array<hostkit::Host, 3> hosts;
        std::array<std::unique_ptr<CommandScope>, 3> scopes;
        for (int i = 0; i < 3; ++i)
            scopes[i] = std::make_unique<CommandScope>(10 + i, 20 + i, hosts[i].inData());
        EXPECT_EQ(scopesFromNewest(), (std::vector{scopes[2].get(), scopes[1].get(),
                                                   scopes[0].get()}));
        for (const int leaving : order) {
            scopes[leaving].reset();
            std::vector<CommandScope*> left;
            for (int i = 2; i >= 0; --i)
                if (scopes[i] != nullptr)
                    left.push_back(scopes[i].get());
            EXPECT_EQ(scopesFromNewest(), left);
            // Whoever is newest now, its record and its suites are what the code sees.
            EXPECT_EQ(currentInData(),
                      left.empty() ? nullptr : hosts[left[0]->selector - 10].inData());
            EXPECT_EQ(currentSuites(), left.empty() ? nullptr : &left[0]->context->suites);
            EXPECT_EQ(currentPluginId, 22);
        }
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
        EXPECT_EQ(scope.context, nullptr);
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

TEST_F(Support, AHostWithoutBasicSuiteEndsTheCommand) {
    hostkit::Host bare;
    bare.inData()->pica_basicP = nullptr;
    const std::size_t handles = memory::liveHandles();
    EXPECT_EQ(thrownBy([&] { CommandScope(1, 0, bare.inData()); }), 516);
    EXPECT_EQ(memory::liveHandles(), handles);
    EXPECT_EQ(currentInData(), host.inData());
}

TEST(SuiteTables, EachPairOfNameAndVersionHasOneSlot) {
    std::set<std::pair<std::string, int>> pairs;
    std::size_t unused = 0;
    for (std::size_t i = 0; i < suiteSlots.size(); ++i) {
        const SuiteSlot& slot = suiteSlots[i];
        if (slot.name == nullptr) {
            ++unused;
            continue;
        }
        EXPECT_TRUE(pairs.emplace(slot.name, slot.version).second) << slot.name << slot.version;
        EXPECT_EQ(suiteSlotIndex(slot.name, slot.version), i);
    }
    EXPECT_EQ(unused, 11U);
    EXPECT_EQ(pairs.size(), 99U);
    EXPECT_EQ(suiteSlotIndex("AEGP Utility Suite", 11), 109U); // the last one
    EXPECT_EQ(suiteSlotIndex("PF World Suite", 2), suiteSlotCount);
}

TEST(SuiteTables, LendOnceAndGiveBackUnderTheSamePair) {
    const std::vector<std::pair<std::string, int>> reached = {
        {"AEGP Dynamic Stream Suite", 5}, {"AEGP Effect Suite", 3},  {"AEGP Keyframe Suite", 4},
        {"AEGP PF Interface Suite", 1},   {"AEGP Stream Suite", 9},  {"AEGP Utility Suite", 11},
        {"PF Param Utils Suite", 1},      {"PF World Suite", 1},
    };
    suites::withdrawAll();
    for (const auto& slot : suiteSlots) // each table is known by its slot
        if (slot.name != nullptr)
            suites::offer(slot.name, slot.version, &slot);
    {
        SuiteTable table(&suites::basicSuite());
        EXPECT_TRUE(suites::loans().empty()) << "suites are taken on first use";
        for (int round = 0; round < 2; ++round) {
            const void* tables[] = {table.dynamicStreamSuite5(), table.effectSuite3(),
                                    table.keyframeSuite4(),      table.interfaceSuite1(),
                                    table.streamSuite9(),        table.utilitySuite11(),
                                    table.paramUtilsSuite1(),    table.worldSuite1()};
            for (std::size_t i = 0; i < reached.size(); ++i)
                EXPECT_EQ(tables[i],
                          &suiteSlots[suiteSlotIndex(reached[i].first, reached[i].second)]);
        }
        for (const suites::Loan& loan : suites::loans())
            EXPECT_EQ(loan.returned, 0U) << loan.name;
    }
    std::vector<std::pair<std::string, int>> seen;
    for (const suites::Loan& loan : suites::loans()) {
        seen.emplace_back(loan.name, loan.version);
        EXPECT_EQ(loan.lent, 1U) << loan.name;
        EXPECT_EQ(loan.returned, 1U) << loan.name;
    }
    EXPECT_EQ(seen, reached);
    EXPECT_EQ(suites::takeFaults(), std::vector<std::string>());
    suites::withdrawAll();
}

TEST(SuiteTables, AMissingSuiteEndsTheCommandAndTheOthersGoBack) {
    const int table = 0;
    suites::withdrawAll();
    suites::offer("AEGP Stream Suite", 9, &table);
    suites::offer("AEGP Effect Suite", 2, &table);  // another version is no replacement
    suites::offer("PF World Suite", 1, nullptr); // lent with success, but there is none
    const auto borrow = [](auto accessor) {
        return thrownBy([&] {
            SuiteTable borrowed(&suites::basicSuite());
            borrowed.streamSuite9();
            (borrowed.*accessor)();
        });
    };
    EXPECT_EQ(borrow(&SuiteTable::effectSuite3), 516);
    EXPECT_EQ(borrow(&SuiteTable::worldSuite1), 516);
    EXPECT_EQ(thrownBy([] { SuiteTable(nullptr); }), 516);
    const suites::Loan stream = suites::loans()[0];
    EXPECT_EQ(stream.name, "AEGP Stream Suite");
    EXPECT_EQ(stream.lent, 2U);
    EXPECT_EQ(stream.returned, 2U);
    EXPECT_EQ(suites::takeFaults(), std::vector<std::string>());
    suites::withdrawAll();
}

TEST(Heap, TalksToTheHostOfTheRunningCommand) {
    EXPECT_EQ(allocate(1), nullptr) << "no command runs";
    void* block = nullptr;
    {
        hostkit::Host first;
        const CommandScope scope(1, 0, first.inData());
        block = allocate(0);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(handleSize(handleOf(block)), std::int64_t{sizeof(void*)});
        EXPECT_EQ(*handleOf(block), static_cast<void**>(block) - 1);
    }
    release(block); // nobody to give it to
    EXPECT_EQ(memory::liveHandles(), 1U);
    SpiedHost second;
    {
        const CommandScope scope(2, 0, second.inData());
        calls.clear();
        release(nullptr);
        release(block);
        EXPECT_EQ(calls, "unlock dispose ");
        calls.clear();
        block = allocate(100);
        EXPECT_EQ(handleOf(block), SpiedHost::lastHandle);
        EXPECT_EQ(calls, "new" + std::to_string(100 + sizeof(void*)) + " lock ");
        release(block);
        calls.clear();
    }
    EXPECT_EQ(calls, "dispose ") << "the context goes while it is locked";
    EXPECT_EQ(memory::liveHandles(), 0U);
    EXPECT_EQ(memory::takeFaults(), std::vector<std::string>());
}

TEST_F(Support, AlignedBlocksLieWithinTheirHandle) {
    for (std::size_t alignment = 1; alignment <= 4096; alignment *= 2)
        for (const std::size_t size : {0, 1, 24, 1000}) {
            void* block = allocateAligned(size, alignment);
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0U);
            std::memset(block, 0x5A, size); // AddressSanitizer watches the end
            releaseAligned(block);
        }
    releaseAligned(nullptr);
}

TEST_F(Support, SizesThatOverflowGiveNothing) {
    const std::uint64_t made = memory::handlesMade();
    EXPECT_EQ(allocate(SIZE_MAX), nullptr);
    EXPECT_EQ(allocate(SIZE_MAX - sizeof(void*) + 1), nullptr);
    for (std::size_t less = 0; less < 64; ++less)
        EXPECT_EQ(allocateAligned(SIZE_MAX - less, 64), nullptr) << less;
    aeAllocator<std::int64_t> allocator;
    EXPECT_EQ(thrownBy([&] { allocator.deallocate(allocator.allocate(SIZE_MAX / 8 + 2), 0); }), 4);
    EXPECT_EQ(memory::handlesMade(), made);
}

TEST_F(Support, LackOfMemoryEndsTheCommandAndLeavesNothing) {
    const std::uint64_t allocations = failEveryAllocation([] {
        HostVector<NarrowString> texts;
        for (int i = 0; i < 3; ++i)
            texts.push_back(concatenate(NarrowString(40, 'a'), "tail"));
        toNarrow(toWide(texts.back()));
        JstString("a text that is too long for the object itself, piece").split(", ").join("-");
    });
    EXPECT_GT(allocations, 10U);
}

TEST_F(Support, ObjectsOfTheRootClassLiveInHandles) {
    static int alive;
    alive = 0;
    struct Root : aeBase {
        Root() { ++alive; }
        ~Root() override { --alive; }
    };
    struct Leaf : Root {
        std::array<char, 100> more{};
    };
    Root* object = new Leaf;
    EXPECT_EQ(handleSize(handleOf(object)), std::int64_t{sizeof(Leaf) + sizeof(void*)});
    EXPECT_EQ(*handleOf(object), reinterpret_cast<void**>(object) - 1);
    delete object;
    memory::setHandlesLeft(0);
    EXPECT_EQ(new Leaf, nullptr);
    EXPECT_EQ(thrownBy([] { makeObject<Leaf>(); }), 4);
    EXPECT_EQ(alive, 0) << "a constructor ran without an object";
}
