// The controls of an instance as text and JSON: kind, name, range and value.
//
// Numbers have the units of hostkit/effect/control_kinds.h.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/effect.h"
#include "pbhost/files/json_text.h"

namespace pbhost {

// The control's current name, set by the effect.
std::string nameOf(const hostkit::Effect& effect, std::size_t index);

// The indices of the visible controls, or with `all` of all controls.
std::vector<std::size_t> listedControls(hostkit::Effect& effect, bool all = false);

// Why the number is invalid for the control, as the end of a sentence; empty if it is valid.
std::string faultOfNumber(const PF_ParamDef& definition, double number);

// Whether the number can be the control's default, which may be outside the range.
bool mayBeDefault(const PF_ParamDef& definition, double number, const hostkit::Layer& layer);

// The number with as few digits as distinguish it in 16.16 fixed point.
std::string numberText(double number);

// One line for each visible control, for messages.
std::string describeControls(hostkit::Effect& effect);

// Everything about a control, with its value at a time of the composition in seconds.
Json controlAsJson(hostkit::Effect& effect, std::size_t index, double seconds);

} // namespace pbhost
