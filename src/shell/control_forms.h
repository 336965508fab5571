// How a parameter is shown to the user: one row for each way, with all that depends on the way.
//
// A parameter's hint for the control goes before its parameter type, and that before its plain
// components. To add a kind of control, add a row here and, for a new type of the host's control, a
// pool in control_layout; projects store values by the place of a control, so pools only ever grow
// at the end of the list.
#pragma once

#include <cstddef>

#include "pixelbender/model.h"
#include "sdk/aegp_types.h"
#include "sdk/pf_params.h"

// What a control is configured from: component k of a parameter, for a layer of in_data's size.
struct ControlSource {
    const PF_InData& inData;
    const pbParameter& parameter;
    std::size_t k;
};

// Full resolution over the frame's: 1/2 for a frame half as wide.
struct Downsampling {
    float x;
    float y;
};

struct ControlForm {
    // What a parameter must have to be shown so. The "none" of an enumeration accepts everything.
    pbUIControl hint;
    pbParameterType parameterType;
    pbScalarKind scalarKind;

    PF_ParamType pool;
    bool isPerComponent; // a control for each component, next to each other; or one for all

    // Writes what the form gives of a definition: range, default, choices; not the name.
    void (*configure)(PF_ParamDef& definition, const ControlSource& source);
    // The kernel's default, as the stored value of the control.
    AEGP_StreamVal2 (*defaultValue)(const ControlSource& source);
    // Writes the value of a control into component k, or into all components where it serves all.
    // Points come scaled by the frame's downsampling, which is undone.
    void (*read)(const PF_ParamDefUnion& control, std::size_t k, const Downsampling& downsampling,
                 pbValue& value);
};

// The first row that accepts the parameter; null: it has no control.
const ControlForm* controlForm(const pbParameter& parameter);
