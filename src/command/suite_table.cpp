#include "command/suite_table.h"

#include "sdk/pf_types.h"

void MissingSuiteError() {
    throw static_cast<long>(PF_Err_BAD_CALLBACK_PARAM);
}

SuiteTable::SuiteTable(SPBasicSuite* basic) : basic_(basic) {
    if (basic == nullptr)
        MissingSuiteError();
}

SuiteTable::~SuiteTable() {
    for (std::size_t i = 0; i < suiteSlotCount; ++i)
        if (suites_[i] != nullptr)
            basic_->ReleaseSuite(suiteSlots[i].name, suiteSlots[i].version);
}

const void* SuiteTable::fill(std::size_t slot) {
    if (suites_[slot] != nullptr)
        return suites_[slot];
    const void* suite = nullptr;
    const SPErr err = basic_->AcquireSuite(suiteSlots[slot].name, suiteSlots[slot].version, &suite);
    if (err == 0)
        suites_[slot] = suite;
    return suites_[slot];
}
