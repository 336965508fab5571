// Between the definitions of controls and the values of their streams.
//
// A stream counts as its suite says: points in pixels of the layer at full resolution, colours from
// 0 to 1, angles in degrees, choices from 1. A definition counts as its control does.
#pragma once

#include <string>

#include "hostkit/frames.h"
#include "hostkit/streams.h"
#include "sdk/pf_params.h"

namespace hostkit {

// For a definition that passed `faultOf`.
AEGP_StreamType streamTypeOf(PF_ParamType kind);

// The value with which a control starts; points are declared in percent of the layer.
StreamValue startValue(const PF_ParamDef& definition, const Layer& layer);

// Writes the value into the definition; points at the resolution. A layer control gets the layer
// and its size, without pixels.
void writeValue(PF_ParamDef& definition, const StreamValue& value, const Layer& layer,
                const Resolution& resolution);

// The layer that a layer control has chosen; null: none.
Layer* chosenLayer(const StreamValue& value, const Layer& layer);

// Name, flags, ranges, defaults and display of another definition of the same kind; the value
// stays.
void dress(PF_ParamDef& definition, const PF_ParamDef& look);

// What is wrong with a definition that a module hands over; empty: nothing.
std::string faultOf(const PF_ParamDef& definition);

// Whether the text of a popup names its choices; a kernel's own popups need not.
bool hasNamesForChoices(const PF_PopupDef& popup);

// The size of a layer at full resolution: its source's, or without one the composition's.
const Item& frameItem(const Layer& layer);

// The host's rounding to 16.16.
PF_Fixed toFixed(double value);

} // namespace hostkit
