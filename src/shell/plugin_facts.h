// The name, version and flags of the module. The host reads them from the resource before it loads
// the module, and gets them again from global setup; both use this file.
#pragma once

#include <array>
#include <cstdint>

#include "sdk/pf_types.h"

inline constexpr char pluginName[] = "Tvelmarondine";

inline constexpr A_u_long pluginVersion = 0x80001;

inline constexpr A_long pluginOutFlags =
    PF_OutFlag_KEEP_RESOURCE_OPEN | PF_OutFlag_SEQUENCE_DATA_NEEDS_FLATTENING |
    PF_OutFlag_I_DO_DIALOG | PF_OutFlag_DEEP_COLOR_AWARE | PF_OutFlag_SEND_UPDATE_PARAMS_UI;
inline constexpr A_long pluginOutFlags2 =
    PF_OutFlag2_SUPPORTS_SMART_RENDER | PF_OutFlag2_FLOAT_COLOR_AWARE;
static_assert(pluginOutFlags == 0x6000031 && pluginOutFlags2 == 0x1400,
              "the numbers that the resource has always had");

// One property of the resource: a text or, where text is null, a number.
struct PiplEntry {
    const char* key; // four characters
    const char* text;
    std::uint32_t number;
};

inline constexpr std::int32_t piplResourceId = 16000;
inline constexpr char piplVendor[] = "8BIM"; // of every property

// A version in the resource's format: the major number in the upper half.
constexpr std::uint32_t piplVersion(std::uint32_t major, std::uint32_t minor) {
    return major << 16 | minor;
}

// Four characters as a number whose bytes in the file are these characters.
constexpr std::uint32_t fourCharacters(const char (&text)[5]) {
    std::uint32_t number = 0;
    for (unsigned i = 0; i < 4; ++i)
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])) << (8 * i);
    return number;
}

inline constexpr std::array<PiplEntry, 12> piplEntries = {{
    {"kind", nullptr, fourCharacters("eFKT")},
    {"name", pluginName, 0},
    {"catg", "HOLMVARDEN", 0},
    {"wx86", "EntryPointFunc", 0},
    {"ePVR", nullptr, piplVersion(2, 0)},
    {"eSVR", nullptr, piplVersion(12, 14)},
    {"eVER", nullptr, pluginVersion},
    {"eINF", nullptr, 0},
    {"eGLO", nullptr, pluginOutFlags},
    {"eGL2", nullptr, pluginOutFlags2},
    {"eMNA", "HOLMVARDEN_Tvelmarondine", 0},
    {"aeFL", nullptr, 0},
}};
