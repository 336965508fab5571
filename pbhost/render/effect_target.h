// The part of a setting that chooses an effect of a stack: "2:amount" or "glow.amount".
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostkit/effect/effect.h"
#include "pbhost/session/control_setting.h"

namespace pbhost {

// The names of the effects: the stems of their files, in the order of the stack.
using EffectNames = std::vector<std::string>;

struct TargetedSetting {
    std::optional<std::size_t> effect; // from 0; nothing: the one that has the control
    ControlSetting setting;
};

// Takes the effect off the control's name. `option` is for messages. Throws Failure (Usage) for an
// effect that does not exist or a name that several effects have.
TargetedSetting targetOf(const char* option, ControlSetting setting, const EffectNames& names);

// The effect that has the setting's control, among layer controls or the others. Throws Failure
// (Usage) if several or none of several effects have it.
std::size_t effectOf(const char* option, const TargetedSetting& setting, const EffectNames& names,
                     const std::vector<hostkit::Effect*>& effects, bool isLayer);

} // namespace pbhost
