// Values from the command line, `CONTROL=V[,V...]`, and their application to an instance's
// controls.
#pragma once

#include <string>

#include "hostkit/effect/effect.h"

namespace pbhost {

struct ControlSetting {
    std::string control; // the current name, the name without "[k]", or an index
    std::string value;
};

// Throws Failure (Usage), naming the option, if the text contains no '=' or nothing before it.
ControlSetting parseSetting(const char* option, const std::string& text);

// Sets the control, or all of `name[0]`, `name[1]` ... if only `name` is given, at a time of the
// composition. Throws Failure (Usage), with a list of the controls, for an unknown or ambiguous
// name, and for values that are invalid or out of range.
void applySetting(hostkit::Effect& effect, const ControlSetting& setting, double seconds);

// The same as a keyframe at that time; with `isHeld` the value stays until the next one. The values
// of checkboxes and popups always do.
void applyKey(hostkit::Effect& effect, const ControlSetting& setting, double seconds, bool isHeld);

// Whether the effect has a control of that name or index, as the functions here find it.
bool hasControl(hostkit::Effect& effect, const std::string& control, bool isLayer);

// The index of a layer control, given by its number from 1 or its name. Throws as applySetting
// does.
std::size_t findLayerControl(hostkit::Effect& effect, const ControlSetting& setting);

} // namespace pbhost
