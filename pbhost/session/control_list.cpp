#include "pbhost/session/control_list.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

namespace pbhost {

namespace {

using hostkit::ControlKind, hostkit::DefaultFit, hostkit::NumberFormat, hostkit::NumberRange;

constexpr double mostFixed = std::numeric_limits<PF_Fixed>::max() / fixedOne;

// The shortest number with the same 16.16 representation.
float shortFixed(double number) {
    return std::strtof(numberText(number).c_str(), nullptr);
}

Json numberAsJson(NumberFormat format, double number) {
    return format == NumberFormat::Whole   ? Json(std::llround(number))
           : format == NumberFormat::Truth ? Json(number != 0)
                                           : Json(static_cast<float>(number));
}

// A single number as such, several as an array.
Json asJson(const ControlKind& kind, const AEGP_StreamVal2& value) {
    Json json = Json::array();
    for (const double number : hostkit::numbersOf(kind, value))
        json.push_back(numberAsJson(kind.format, number));
    return json.size() == 1 ? json[0] : json;
}

Json defaultAsJson(const ControlKind& kind, const PF_ParamDef& definition,
                   const hostkit::Layer& layer) {
    const AEGP_StreamVal2 value = kind.defaultValue(definition.u, layer);
    if (hostkit::isLayerControl(definition))
        return nullptr;
    return kind.format == NumberFormat::Fixed ? Json(shortFixed(value.one_d)) : asJson(kind, value);
}

Json valueAsJson(const ControlKind& kind, const hostkit::StreamValue& value,
                 const hostkit::Layer& layer) {
    if (kind.numbers > 0)
        return asJson(kind, value.value);
    const hostkit::Layer* chosen = hostkit::chosenLayer(value, layer);
    return chosen == nullptr ? Json() : Json(chosen->source->name);
}

std::optional<NumberRange> shownRange(const ControlKind& kind, const PF_ParamDef& definition) {
    return kind.isRangeShown ? kind.range(definition.u) : std::nullopt;
}

const char* displayOf(const ControlKind& kind, const PF_ParamDef& definition) {
    return kind.display == nullptr ? nullptr : kind.display(definition.u);
}

// The number as the control stores it: rounded to 16.16 for fixed-point kinds.
double stored(NumberFormat format, double number) {
    return format == NumberFormat::Fixed ? toFixed(number) / fixedOne : number;
}

} // namespace

std::string nameOf(const hostkit::Effect& effect, std::size_t index) {
    return effect.definitions.at(index).name;
}

std::vector<std::size_t> listedControls(hostkit::Effect& effect, bool all) {
    std::vector<std::size_t> indices;
    for (std::size_t index = 1; index < effect.definitions.size(); ++index)
        if (all || !effect.control(index).isHidden())
            indices.push_back(index);
    return indices;
}

std::string faultOfNumber(const PF_ParamDef& definition, double number) {
    const ControlKind& kind = hostkit::kindOf(definition);
    if (kind.format == NumberFormat::Truth)
        return number == 0 || number == 1 ? "" : "is neither true nor false";
    const bool isWhole = kind.format == NumberFormat::Whole;
    if (isWhole && !(std::abs(number) <= INT32_MAX && number == std::floor(number)))
        return "is not a whole number";
    if (!isWhole && !(std::abs(number) <= mostFixed))
        return "is out of range, a control can store -32768 to 32768";
    const auto range = kind.range == nullptr ? std::nullopt : kind.range(definition.u);
    const double value = stored(kind.format, number); // range ends are rounded too
    if (range && (value < range->low || value > range->high))
        return "is out of range, " + numberText(range->low) + " to " + numberText(range->high);
    return "";
}

bool mayBeDefault(const PF_ParamDef& definition, double number, const hostkit::Layer& layer) {
    const ControlKind& kind = hostkit::kindOf(definition);
    return kind.defaultFit == DefaultFit::Anything ||
           (kind.defaultFit == DefaultFit::Exactly &&
            stored(kind.format, number) == kind.defaultValue(definition.u, layer).one_d);
}

std::string numberText(double number) {
    std::array<char, 64> digits{};
    for (int decimals = 0;; ++decimals) {
        const auto end =
            std::to_chars(digits.begin(), digits.end(), number, std::chars_format::fixed, decimals)
                .ptr;
        double shown = 0;
        std::from_chars(digits.begin(), end, shown);
        if (decimals == 6 || std::abs(shown - number) * fixedOne < 0.5)
            return {digits.begin(), end};
    }
}

std::string describeControls(hostkit::Effect& effect) {
    std::string text;
    for (const std::size_t index : listedControls(effect)) {
        const PF_ParamDef& definition = effect.definitions[index];
        const ControlKind& kind = hostkit::kindOf(definition);
        text.append("\n  ").append(nameOf(effect, index)).append(": ").append(kind.name);
        if (const auto range = shownRange(kind, definition))
            text.append(" from " + numberText(range->low) + " to " + numberText(range->high));
        if (!kind.hasChoices)
            continue;
        const std::vector<std::string> choices = hostkit::namedChoicesOf(definition.u.pd);
        for (std::size_t i = 0; i < choices.size(); ++i)
            text.append(i == 0 ? " " : ", ").append(std::to_string(i + 1) + " " + choices[i]);
    }
    return text.empty() ? "\n  none" : text;
}

Json controlAsJson(hostkit::Effect& effect, std::size_t index, double seconds) {
    const PF_ParamDef& definition = effect.definitions.at(index);
    const ControlKind& kind = hostkit::kindOf(definition);
    const hostkit::Layer& layer = *effect.layer;
    const hostkit::StreamValue value = effect.control(index).at(seconds - layer.inSeconds);
    const std::optional<NumberRange> range = shownRange(kind, definition);
    const char* display = displayOf(kind, definition);
    return {{"index", index},
            {"name", nameOf(effect, index)},
            {"kind", kind.name},
            {"value", valueAsJson(kind, value, layer)},
            {"default", defaultAsJson(kind, definition, layer)},
            {"range", range ? Json{shortFixed(range->low), shortFixed(range->high)} : Json()},
            {"choices", kind.hasChoices ? Json(hostkit::namedChoicesOf(definition.u.pd)) : Json()},
            {"display", display == nullptr ? Json() : Json(display)},
            {"hidden", effect.control(index).isHidden()}};
}

} // namespace pbhost
