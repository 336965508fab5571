// The controls of an instance as a person meets them: by kind, name, range and value.
//
// Values count as the controls do: popups from 1, points in pixels of the layer, angles in degrees,
// colours from 0 to 1.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/effect.h"
#include "pbhost/json_text.h"

namespace pbhost {

const char* kindName(PF_ParamType kind);

// A control's name, as the effect gave it.
std::string nameOf(const hostkit::Effect& effect, std::size_t index);

// The indices of the controls that the effect shows; with `all` of every control.
std::vector<std::size_t> listedControls(hostkit::Effect& effect, bool all = false);

struct Range {
    double low;
    double high;
};

// None where the control has none, or one that holds a single value: a kernel need not give a
// range.
std::optional<Range> rangeOf(const PF_ParamDef& definition);

// What is wrong with a number for a control, or with one of its numbers, as the end of a sentence
// about it; empty: nothing.
std::string faultOfNumber(const PF_ParamDef& definition, double number);

// Whether a number may be the control's default, which may lie outside the range. A definition
// holds those of colours and points only roughly, so that any number may be one.
bool mayBeDefault(const PF_ParamDef& definition, double number);

// The texts of a popup's choices; a choice without one goes by its number, counted from 1.
std::vector<std::string> choicesOf(const PF_PopupDef& popup);

// A number as text, with as many digits as tell it from its neighbours in 16.16.
std::string numberText(double number);

// One line for each control that the effect shows, for messages.
std::string describeControls(hostkit::Effect& effect);

// Everything about a control, its value at a time of the composition.
Json controlAsJson(hostkit::Effect& effect, std::size_t index, double seconds);

} // namespace pbhost
