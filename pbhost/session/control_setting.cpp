#include "pbhost/session/control_setting.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "hostkit/services/text.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/control_list.h"

namespace pbhost {

namespace {

using Indices = std::vector<std::size_t>;

using hostkit::areAlike, hostkit::areEqual, hostkit::ControlKind;
using Comparison = bool (*)(std::string_view, std::string_view);

// The controls with that name; if there are none, those with that name and "[0]", "[1]" ...
Indices findByName(const hostkit::Effect& effect, const Indices& among, std::string_view name,
                   Comparison isName) {
    Indices found;
    for (const std::size_t index : among)
        if (isName(nameOf(effect, index), name))
            found.push_back(index);
    if (!found.empty())
        return found;
    for (const std::size_t index : among)
        if (isName(nameOf(effect, index),
                   std::string(name) + "[" + std::to_string(found.size()) + "]"))
            found.push_back(index);
    return found;
}

// The visible controls that are layer controls, or that are not.
Indices listedOf(hostkit::Effect& effect, bool areLayers) {
    Indices all = listedControls(effect);
    std::erase_if(all, [&](std::size_t index) {
        return hostkit::isLayerControl(effect.definitions[index]) != areLayers;
    });
    return all;
}

// The control whose index is this text.
Indices findByIndex(const Indices& among, const std::string& text) {
    const auto found = std::find_if(among.begin(), among.end(), [&](std::size_t index) {
        return std::to_string(index) == text;
    });
    return found == among.end() ? Indices() : Indices{*found};
}

std::vector<std::string> splitValues(const std::string& text) {
    std::vector<std::string> values;
    std::size_t start = 0;
    for (std::size_t comma = 0; comma != std::string::npos; start = comma + 1) {
        comma = text.find(',', start);
        values.push_back(text.substr(start, comma - start));
    }
    return values;
}

// How a value is stored in a stream.
enum class Store { Value, Key, HeldKey };

// Applies one setting.
class Setter {
public:
    Setter(hostkit::Effect& owner, const ControlSetting& given, double compSeconds, Store how)
        : effect_(owner), setting_(given), seconds_(compSeconds - owner.layer->inSeconds),
          how_(how) {}

    void run() {
        const Indices found = find();
        const bool isOneText =
            found.size() == 1 && hostkit::kindOf(effect_.definitions[found.front()]).hasChoices;
        const auto values = isOneText ? std::vector{setting_.value} : splitValues(setting_.value);
        if (found.size() == 1)
            return set(found.front(), values);
        requireCount(values, found.size());
        for (std::size_t k = 0; k < found.size(); ++k)
            set(found[k], {values[k]});
    }

    [[noreturn]] void fail(const std::string& why) const {
        throw Failure(ExitCode::Usage, (how_ == Store::Value ? "--set " : "--key ") +
                                           setting_.control + "=" + setting_.value + ": " + why +
                                           "; the controls are:" + describeControls(effect_));
    }

private:
    Indices find() const {
        const Indices all = listedOf(effect_, false);
        for (const Comparison isName : {areEqual, areAlike})
            if (const Indices found = findByName(effect_, all, setting_.control, isName);
                !found.empty())
                return requireOneMeaning(found);
        const Indices found = findByIndex(all, setting_.control);
        if (found.empty())
            fail("there is no such control");
        return found;
    }

    // Several matches are allowed only if they are the components of one parameter.
    Indices requireOneMeaning(const Indices& found) const {
        for (std::size_t k = 1; k < found.size(); ++k)
            if (nameOf(effect_, found[k]) == nameOf(effect_, found[0]) ||
                !nameOf(effect_, found[k]).ends_with("[" + std::to_string(k) + "]"))
                fail("several controls have that name; give the index (shown by pbhost controls)");
        return found;
    }

    void requireCount(const std::vector<std::string>& values, std::size_t wanted) const {
        if (values.size() != wanted)
            fail("it takes " + std::to_string(wanted) + (wanted == 1 ? " value, " : " values, ") +
                 std::to_string(values.size()) + (values.size() == 1 ? " is given" : " are given"));
    }

    // If fewer numbers than components are given, the other components keep their values.
    void set(std::size_t index, const std::vector<std::string>& values) {
        const PF_ParamDef& definition = effect_.definitions[index];
        const ControlKind& kind = hostkit::kindOf(definition);
        if (values.size() != kind.numbers)
            requireCount(values, kind.fewestNumbers);
        std::vector<double> numbers =
            hostkit::numbersOf(kind, effect_.control(index).at(seconds_).value);
        for (std::size_t k = 0; k < values.size(); ++k)
            numbers[k] = number(definition, values[k]);
        store(effect_.control(index), {hostkit::valueOf(kind, numbers)},
              kind.format == hostkit::NumberFormat::Truth);
    }

    void store(hostkit::Stream& stream, const hostkit::StreamValue& value, bool isTruth) const {
        if (how_ == Store::Value)
            return stream.set(value, seconds_);
        const std::size_t key = stream.addKeyframe(seconds_);
        stream.setKeyframe(key, value);
        stream.keyframes[key].out =
            how_ == Store::HeldKey || isTruth ? AEGP_KeyInterp_HOLD : AEGP_KeyInterp_LINEAR;
    }

    double number(const PF_ParamDef& definition, const std::string& text) const {
        double number = 0;
        try {
            number = hostkit::kindOf(definition).parse(definition.u, text);
        } catch (const std::invalid_argument& reason) {
            fail(reason.what());
        }
        if (const std::string fault = faultOfNumber(definition, number); !fault.empty())
            fail("\"" + text + "\" " + fault);
        return number;
    }

    hostkit::Effect& effect_;
    const ControlSetting& setting_;
    const double seconds_; // of the layer
    const Store how_;
};

} // namespace

ControlSetting parseSetting(const char* option, const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(ExitCode::Usage, std::string(option) + " " + text +
                                           ": write CONTROL=VALUE, or CONTROL=V,V,V for several");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

void applySetting(hostkit::Effect& effect, const ControlSetting& setting, double seconds) {
    Setter(effect, setting, seconds, Store::Value).run();
}

void applyKey(hostkit::Effect& effect, const ControlSetting& setting, double seconds, bool isHeld) {
    Setter(effect, setting, seconds, isHeld ? Store::HeldKey : Store::Key).run();
}

bool hasControl(hostkit::Effect& effect, const std::string& control, bool isLayer) {
    const Indices all = listedOf(effect, isLayer);
    return !findByName(effect, all, control, areAlike).empty() ||
           !findByIndex(all, control).empty();
}

std::size_t findLayerControl(hostkit::Effect& effect, const ControlSetting& setting) {
    const Indices all = listedOf(effect, true);
    for (const Comparison isName : {areEqual, areAlike}) {
        const Indices found = findByName(effect, all, setting.control, isName);
        if (found.size() == 1)
            return found.front();
    }
    // Layer controls are the first controls, so their number is their index.
    const Indices found = findByIndex(all, setting.control);
    if (!found.empty())
        return found.front();
    std::string list;
    for (const std::size_t index : all)
        list.append("\n  ").append(std::to_string(index) + " " + nameOf(effect, index));
    throw Failure(ExitCode::Usage, "--layer " + setting.control + "=" + setting.value +
                                       ": there is no such layer control; there are:" +
                                       (list.empty() ? "\n  none" : list));
}

} // namespace pbhost
