#include "pbhost/render/effect_target.h"

#include <charconv>

#include "pbhost/process/failure.h"
#include "pbhost/session/control_list.h"

namespace pbhost {

namespace {

[[noreturn]] void fail(const char* option, const ControlSetting& setting, const std::string& why,
                       const EffectNames& names) {
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i)
        list += "\n  " + std::to_string(i + 1) + ": " + names[i];
    throw Failure(ExitCode::Usage, std::string(option) + " " + setting.control + "=" +
                                       setting.value + ": " + why + "; the effects are:" + list);
}

// The number before a colon, if the name begins with one.
std::optional<std::size_t> numberBefore(const std::string& name, std::size_t& rest) {
    std::size_t number = 0;
    const char* const end = name.data() + name.size();
    const auto [at, error] = std::from_chars(name.data(), end, number);
    if (error != std::errc() || at == end || *at != ':')
        return std::nullopt;
    rest = std::size_t(at - name.data()) + 1;
    return number;
}

} // namespace

TargetedSetting targetOf(const char* option, ControlSetting setting, const EffectNames& names) {
    std::size_t rest = 0;
    if (const auto number = numberBefore(setting.control, rest)) {
        if (*number == 0 || *number > names.size())
            fail(option, setting, "there is no effect " + std::to_string(*number), names);
        setting.control.erase(0, rest);
        return {*number - 1, setting};
    }
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].empty() || !setting.control.starts_with(names[i] + "."))
            continue;
        if (found)
            fail(option, setting, "several effects have that name; give the number", names);
        found = i;
    }
    if (found)
        setting.control.erase(0, names[*found].size() + 1);
    return {found, setting};
}

std::size_t effectOf(const char* option, const TargetedSetting& setting, const EffectNames& names,
                     const std::vector<hostkit::Effect*>& effects, bool isLayer) {
    if (setting.effect)
        return *setting.effect;
    if (effects.size() == 1)
        return 0;
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < effects.size(); ++i) {
        if (!hasControl(*effects[i], setting.setting.control, isLayer))
            continue;
        if (found)
            fail(option, setting.setting,
                 "several effects have that control; write 1:CONTROL or NAME.CONTROL", names);
        found = i;
    }
    if (!found)
        fail(option, setting.setting, "no effect has that control", names);
    return *found;
}

} // namespace pbhost
