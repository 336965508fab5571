// The fixed list of host suites: one slot for each pair of name and version. A name occurs once for
// each of its versions, because no version is a fallback for another. The order is fixed; slots
// without a name are never filled.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

struct SuiteSlot {
    const char* name = nullptr; // null: nothing fills this slot
    std::int32_t version = 0;
};

inline constexpr std::size_t suiteSlotCount = 110;

inline constexpr std::array<SuiteSlot, suiteSlotCount> suiteSlots = {{
    {"AEGP Keyframe Suite", 4},
    {"AEGP Stream Suite", 8},
    {"AEGP Stream Suite", 9},
    {"AEGP Marker Suite", 1},
    {},
    {"AEGP Comp Suite", 9},
    {"AEGP Comp Suite", 11},
    {"AEGP Comp Suite", 14},
    {},
    {"AEGP Proj Suite", 2},
    {"AEGP Proj Suite", 5},
    {"AEGP Layer Suite", 8},
    {"AEGP Layer Suite", 10},
    {"AEGP Stream Suite", 7},
    {"AEGP Dynamic Stream Suite", 2},
    {"AEGP Dynamic Stream Suite", 3},
    {"AEGP Dynamic Stream Suite", 5},
    {"AEGP Keyframe Suite", 3},
    {"AEGP Canvas Suite", 10},
    {"AEGP Canvas Suite", 11},
    {},
    {"AEGP Camera Suite", 2},
    {"AEGP Register Suite", 2},
    {"AEGP Memory Suite", 1},
    {},
    {"AEGP Item Suite", 11},
    {"AEGP Item Suite", 10},
    {"AEGP Item Suite", 7},
    {"AEGP Item Suite", 3},
    {"AEGP Light Suite", 1},
    {"AEGP Light Suite", 2},
    {"AEGP Effect Suite", 1},
    {"AEGP Effect Suite", 2},
    {"AEGP Effect Suite", 3},
    {"AEGP Layer Mask Suite", 5},
    {"AEGP Mask Outline Suite", 3},
    {"AEGP Footage Suite", 7},
    {"AEGP Command Suite", 1},
    {"AEGP Utility Suite", 7},
    {"AEGP Render Suite", 1},
    {"AEGP Render Suite", 2},
    {"PF ANSI Suite", 1},
    {"PF Handle Suite", 1},
    {"PF Fill Matte Suite", 1},
    {"PF World Transform Suite", 1},
    {"AEGP QueryXform Suite", 4},
    {"AEGP Composite Suite", 2},
    {"AEGP Composite Suite", 3},
    {"PF World Suite", 1},
    {"AEGP PF Interface Suite", 1},
    {"PF Path Query Suite", 1},
    {"PF Path Data Suite", 1},
    {"PF Param Utils Suite", 1},
    {"PF AE App Suite", 2},
    {"PF AE App Suite", 5},
    {"PF AE Adv App Suite", 2},
    {"AEGP IO In Suite", 1},
    {"AEGP IO Out Suite", 1},
    {"AEGP IO Out Suite", 6},
    {},
    {"AEGP Render Queue Suite", 1},
    {"AEGP Render Queue Item Suite", 3},
    {"AEGP Output Module Suite", 1},
    {"AEGP Output Module Suite", 2},
    {"AEGP File Import Manager Suite", 2},
    {"PF Sampling8 Suite", 1},
    {"PF Sampling16 Suite", 1},
    {"PF Iterate8 Suite", 1},
    {"PF iterate16 Suite", 1},
    {"PF iterateFloat Suite", 1},
    {"AEGP Collection Suite", 2},
    {"AEGP Text Document Suite", 1},
    {"AEGP Sound Data Suite", 1},
    {},
    {"AEGP Text Layer Suite", 1},
    {"AEGP Artisan Util Suite", 1},
    {"AEGP World Suite", 2},
    {"AEGP World Suite", 3},
    {"AEGP Render Options Suite", 1},
    {"AEGP Tracker Suite", 1},
    {"AEGP Tracker Utility Suite", 1},
    {"AE Plugin Helper Suite2", 2},
    {"AEGP Layer Suite", 11},
    {},
    {},
    {},
    {"AEGP Layer Suite", 5},
    {"AEGP Layer Mask Suite", 2},
    {},
    {"AEGP Stream Suite", 4},
    {"AEGP Comp Suite", 4},
    {"AEGP Collection Suite", 1},
    {"AEGP Register Suite", 1},
    {"AEGP Keyframe Suite", 1},
    {"AEGP Mask Outline Suite", 2},
    {"PF AE Adv App Suite", 1},
    {"AEGP Utility Suite", 3},
    {"AEGP Render Options Suite", 2},
    {"AEGP Proj Suite", 7},
    {"AEGP Footage Suite", 10},
    {"AEGP Render Queue Item Suite", 4},
    {"AEGP Utility Suite", 10},
    {"PF Color Settings Suite", 3},
    {"PF Color Settings Suite", 1},
    {"PF AE Adv Item Suite", 1},
    {"AEGP Render Options Suite", 3},
    {"PF ColorParamSuite", 1},
    {},
    {"PF SamplingFloat Suite", 1},
    {"AEGP Utility Suite", 11},
}};

// The index of the slot for exactly this name and version; suiteSlotCount if there is none.
constexpr std::size_t suiteSlotIndex(std::string_view name, std::int32_t version) {
    for (std::size_t i = 0; i < suiteSlotCount; ++i)
        if (suiteSlots[i].name != nullptr && suiteSlots[i].version == version &&
            suiteSlots[i].name == name)
            return i;
    return suiteSlotCount;
}
