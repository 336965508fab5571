// The suites that a stretch of code has borrowed from the host, each under the slot of its name and
// version: acquired on first use, all given back when the table is destroyed.
//
// Every command has one table; code that needs several suites for a short time makes one on its
// stack. No suite pointer may outlive the table that lent it.
#pragma once

#include "host/suite_slots.h"
#include "sdk/sp_basic.h"

struct AEGP_KeyframeSuite4;
struct AEGP_StreamSuite9;
struct AEGP_DynamicStreamSuite5;
struct AEGP_EffectSuite3;
struct AEGP_PFInterfaceSuite1;
struct PF_ParamUtilsSuite1;
struct AEGP_UtilitySuite11;
struct PF_WorldSuite1;

class SuiteTable {
public:
    // Throws `long` 516 when basic is null.
    explicit SuiteTable(SPBasicSuite* basic);
    ~SuiteTable();
    SuiteTable(const SuiteTable&) = delete;
    SuiteTable& operator=(const SuiteTable&) = delete;

    // Each throws `long` 516 when the host refuses the suite.
    const AEGP_KeyframeSuite4* keyframeSuite4() {
        return lookUp<AEGP_KeyframeSuite4, suiteSlotIndex("AEGP Keyframe Suite", 4)>();
    }
    const AEGP_StreamSuite9* streamSuite9() {
        return lookUp<AEGP_StreamSuite9, suiteSlotIndex("AEGP Stream Suite", 9)>();
    }
    const AEGP_DynamicStreamSuite5* dynamicStreamSuite5() {
        return lookUp<AEGP_DynamicStreamSuite5, suiteSlotIndex("AEGP Dynamic Stream Suite", 5)>();
    }
    const AEGP_EffectSuite3* effectSuite3() {
        return lookUp<AEGP_EffectSuite3, suiteSlotIndex("AEGP Effect Suite", 3)>();
    }
    const AEGP_PFInterfaceSuite1* interfaceSuite1() {
        return lookUp<AEGP_PFInterfaceSuite1, suiteSlotIndex("AEGP PF Interface Suite", 1)>();
    }
    const PF_ParamUtilsSuite1* paramUtilsSuite1() {
        return lookUp<PF_ParamUtilsSuite1, suiteSlotIndex("PF Param Utils Suite", 1)>();
    }
    const AEGP_UtilitySuite11* utilitySuite11() {
        return lookUp<AEGP_UtilitySuite11, suiteSlotIndex("AEGP Utility Suite", 11)>();
    }
    const PF_WorldSuite1* worldSuite1() {
        return lookUp<PF_WorldSuite1, suiteSlotIndex("PF World Suite", 1)>();
    }

private:
    template<class Suite, std::size_t slot>
    const Suite* lookUp() {
        static_assert(slot < suiteSlotCount, "no slot for this name and version");
        return static_cast<const Suite*>(fill(slot));
    }
    const void* fill(std::size_t slot);

    SPBasicSuite* basic_;
    std::array<const void*, suiteSlotCount> suites_{};
};

// Ends the running command: throws the `long` 516, which the entry point gives back to the host.
[[noreturn]] void MissingSuiteError();
