// The suites for effects: one table of functions for each name and version.
#pragma once

#include "sdk/pf_params.h"

struct PF_ParamUtilsSuite1 {
    static constexpr const char* name = "PF Param Utils Suite";
    static constexpr A_long version = 1;

    // Updates how a control is shown: name, flags, ranges, defaults, choices; not its value, which
    // is set through its stream. The effect owns the texts of the definition.
    PF_Err (*PF_UpdateParamUI)(PF_ProgPtr effect, A_long index, const PF_ParamDef* definition);
};

struct PF_WorldSuite2 {
    static constexpr const char* name = "PF World Suite";
    static constexpr A_long version = 2;

    PF_Err (*PF_GetPixelFormat)(const PF_EffectWorld* world, PF_PixelFormat* format);
};

struct PF_AdvAppSuite1 {
    static constexpr const char* name = "PF AE Adv App Suite";
    static constexpr A_long version = 1;

    // Lines of the Info panel, UTF-8; lines 2 and 3 may be null.
    PF_Err (*PF_InfoDrawText)(const char* line1, const char* line2);
    PF_Err (*PF_InfoDrawText3)(const char* line1, const char* line2, const char* line3);
};

struct PF_EffectUISuite1 {
    static constexpr const char* name = "PF Effect UI Suite";
    static constexpr A_long version = 1;

    // Only during parameter setup.
    PF_Err (*PF_SetOptionsButtonName)(PF_ProgPtr effect, const char* name);
};
