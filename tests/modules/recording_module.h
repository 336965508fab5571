// A module for tests of the substitute host. It handles every command correctly, records what it
// was sent, and then runs the test's handler, usually to misuse the host.
//
// Test and module share this record through the module's function `recordingModule`.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include "sdk/pf_smart_render.h"
#include "sdk/sp_basic.h"

struct Sent {
    PF_InData* in;
    PF_OutData* out;
    PF_ParamDef** params;
    void* extra;
    PF_LayerDef* output;

    // `seconds` is layer time.
    PF_Err checkout(A_long index, PF_ParamDef& param, A_long seconds = 0) const {
        return in->inter.checkout_param(in->effect_ref, index, seconds, 1, 1, &param);
    }
    PF_Err checkin(PF_ParamDef& param) const {
        return in->inter.checkin_param(in->effect_ref, &param);
    }
    PF_Err add(A_long index, PF_ParamDef param) const {
        return in->inter.add_param(in->effect_ref, index, &param);
    }

    template<class Suite, class Work>
    void with(const Work& work) const {
        const void* suite = nullptr;
        in->pica_basicP->AcquireSuite(Suite::name, Suite::version, &suite);
        work(*static_cast<const Suite*>(suite));
        in->pica_basicP->ReleaseSuite(Suite::name, Suite::version);
    }
};

struct RecordingModule {
    using Handler = std::function<void(const Sent&)>;

    std::vector<PF_Cmd> commands;       // in the order received
    std::map<PF_Cmd, Handler> handlers; // run after the module's own handling
    bool draws = true;                  // false: smart render leaves its output unchanged
    PF_Err error = 0;                   // returned by the next command, then reset to 0
    PF_EffectWorld input{};             // of the last smart render
    A_Boolean keepsHiddenRgb = 1;       // for the checkout in smart pre-render
};

// Kind k of the control kinds has index k + 1.
inline constexpr A_long recordingModuleControls = 9;

inline constexpr A_u_long recordingModuleVersion = 0x80001;
inline constexpr A_long recordingModuleFlags =
    PF_OutFlag_SEQUENCE_DATA_NEEDS_FLATTENING | PF_OutFlag_I_DO_DIALOG |
    PF_OutFlag_DEEP_COLOR_AWARE | PF_OutFlag_SEND_UPDATE_PARAMS_UI;
inline constexpr A_long recordingModuleFlags2 =
    PF_OutFlag2_SUPPORTS_SMART_RENDER | PF_OutFlag2_FLOAT_COLOR_AWARE;
