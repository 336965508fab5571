// The controls of an instance as a person meets them: by kind, name, range and value.
//
// Values count as hostkit/effect/control_kinds.h has them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/effect.h"
#include "pbhost/files/json_text.h"

namespace pbhost {

// A control's name, as the effect gave it.
std::string nameOf(const hostkit::Effect& effect, std::size_t index);

// The indices of the controls that the effect shows; with `all` of every control.
std::vector<std::size_t> listedControls(hostkit::Effect& effect, bool all = false);

// What is wrong with a number for a control, or with one of its numbers, as the end of a sentence
// about it; empty: nothing.
std::string faultOfNumber(const PF_ParamDef& definition, double number);

// Whether a number may be the control's default, which may lie outside the range.
bool mayBeDefault(const PF_ParamDef& definition, double number, const hostkit::Layer& layer);

// A number as text, with as many digits as tell it from its neighbours in 16.16.
std::string numberText(double number);

// One line for each control that the effect shows, for messages.
std::string describeControls(hostkit::Effect& effect);

// Everything about a control, its value at a time of the composition.
Json controlAsJson(hostkit::Effect& effect, std::size_t index, double seconds);

} // namespace pbhost
