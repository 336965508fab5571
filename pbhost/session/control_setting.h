// Values given on the command line, `CONTROL=V[,V...]`, put into the controls of an instance.
#pragma once

#include <string>

#include "hostkit/effect/effect.h"

namespace pbhost {

struct ControlSetting {
    std::string control; // a name as the effect gave it, that name without its "[k]", or an index
    std::string value;
};

// Throws Failure (Usage), naming the option, when the text has no '=' or nothing in front of it.
ControlSetting parseSetting(const char* option, const std::string& text);

// Sets the control, or all of `name[0]`, `name[1]` ... by the name alone, at a time of the
// composition. Throws Failure (Usage), with the controls that there are, for an unknown or
// ambiguous name, a value of another kind, and one outside the range.
void applySetting(hostkit::Effect& effect, const ControlSetting& setting, double seconds);

// The index of a layer control, by its number from 1 or its name; throws as applySetting does.
std::size_t findLayerControl(hostkit::Effect& effect, const ControlSetting& setting);

} // namespace pbhost
