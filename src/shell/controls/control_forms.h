// How a parameter is shown to the user: a table with one row for each form of control.
//
// A parameter's hint for the control takes precedence over its parameter type, and that over its
// element type. To add a form, add a row here and one in engine/graph/graph_parameter, which
// decides how the value is sent to OpenGL; for a new type of the host's control, also a pool in
// control_layout. Projects store values by a control's index, so a new pool must be the last of the
// list.
#pragma once

#include <cstddef>

#include "pixelbender/model.h"
#include "sdk/aegp_types.h"
#include "sdk/pf_params.h"

// The source of a control: component k of a parameter, for a layer of the size in inData.
struct ControlSource {
    const PF_InData& inData;
    const pbParameter& parameter;
    std::size_t k;
};

// The frame's size divided by the full size: 1/2 for a frame half as wide.
struct Downsampling {
    float x;
    float y;
};

struct ControlForm {
    // The parameters that the row applies to. The "none" of an enumeration accepts all values.
    pbUIControl hint;
    pbParameterType parameterType;
    pbScalarKind scalarKind;

    PF_ParamType pool;
    bool isPerComponent; // adjacent controls, one for each component; otherwise one control for all

    // Sets a definition's range, default and choices; not the name.
    void (*configure)(PF_ParamDef& definition, const ControlSource& source);
    // The kernel's default, as the stored value of the control.
    AEGP_StreamVal2 (*defaultValue)(const ControlSource& source);
    // Writes the value of a control into component k, or into all components if not isPerComponent.
    // The host scales points by the frame's downsampling; this is undone.
    void (*read)(const PF_ParamDefUnion& control, std::size_t k, const Downsampling& downsampling,
                 pbValue& value);
};

// The first row that accepts the parameter; null: it has no control.
const ControlForm* controlForm(const pbParameter& parameter);
