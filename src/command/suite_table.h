// A table of host suites, one slot for each name and version. A suite is acquired on first use; all
// are released when the table is destroyed.
//
// Every command has one table; code that needs several suites for a short time creates one on its
// stack. A suite pointer is valid as long as its table.
#pragma once

#include "command/suite_slots.h"
#include "sdk/sp_basic.h"

// Ends the running command: throws the `long` 516, which the entry point returns to the host.
[[noreturn]] void MissingSuiteError();

class SuiteTable {
public:
    // Throws `long` 516 if basic is null.
    explicit SuiteTable(SPBasicSuite* basic);
    ~SuiteTable();
    SuiteTable(const SuiteTable&) = delete;
    SuiteTable& operator=(const SuiteTable&) = delete;

    // The suite with the name and the version of this record; there must be a slot for the pair.
    // Throws `long` 516 if the host does not have the suite.
    template<class Suite>
    const Suite* suite() {
        const Suite* found = find<Suite>();
        if (found == nullptr)
            MissingSuiteError();
        return found;
    }

    // The same for code that must not throw: null if the host does not have the suite.
    template<class Suite>
    const Suite* find() {
        constexpr std::size_t slot = suiteSlotIndex(Suite::name, Suite::version);
        static_assert(slot < suiteSlotCount, "no slot for this name and version");
        return static_cast<const Suite*>(fill(slot));
    }

private:
    const void* fill(std::size_t slot);

    SPBasicSuite* basic_;
    std::array<const void*, suiteSlotCount> suites_{};
};
