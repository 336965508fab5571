#include "pbhost/control_list.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "hostkit/param_values.h"
#include "hostkit/text.h"

namespace pbhost {

namespace {

constexpr std::array<const char*, 8> kindNames = {"layer",    "slider", "fixed slider", "angle",
                                                  "checkbox", "color",  "point",        "popup"};
constexpr double fixedOne = 65536;
constexpr double mostFixed = std::numeric_limits<PF_Fixed>::max() / fixedOne;

std::optional<Range> moreThanOne(double low, double high) {
    return low < high ? std::optional(Range{low, high}) : std::nullopt;
}

// The shortest number that means the same in 16.16.
float shortFixed(double number) {
    return std::strtof(numberText(number).c_str(), nullptr);
}

Json colorAsJson(const PF_Pixel& pixel) {
    Json json = Json::array();
    for (const int channel : {pixel.red, pixel.green, pixel.blue, pixel.alpha})
        json.push_back(static_cast<float>(channel / 255.0));
    return json;
}

Json defaultAsJson(const hostkit::Effect& effect, const PF_ParamDef& definition) {
    const PF_ParamDefUnion& u = definition.u;
    const hostkit::Item& frame = hostkit::frameItem(*effect.layer);
    switch (definition.param_type) {
    case PF_Param_SLIDER:
        return u.sd.dephault;
    case PF_Param_FIX_SLIDER:
        return shortFixed(u.fs_d.dephault / fixedOne);
    case PF_Param_ANGLE:
        return shortFixed(u.ad.dephault / fixedOne);
    case PF_Param_CHECKBOX:
        return u.bd.dephault != 0;
    case PF_Param_COLOR:
        return colorAsJson(u.cd.dephault);
    case PF_Param_POINT: // declared in percent of the layer
        return {static_cast<float>(u.td.x_dephault / fixedOne / 100 * frame.width),
                static_cast<float>(u.td.y_dephault / fixedOne / 100 * frame.height)};
    case PF_Param_POPUP:
        return u.pd.dephault;
    default:
        return nullptr;
    }
}

Json valueAsJson(PF_ParamType kind, const AEGP_StreamVal2& value, const hostkit::Layer& layer) {
    const hostkit::Layer* chosen = nullptr;
    switch (kind) {
    case PF_Param_LAYER:
        if (value.layer_id != 0)
            chosen = layer.composition->findLayer(value.layer_id);
        return chosen == nullptr ? Json() : Json(chosen->source->name);
    case PF_Param_SLIDER:
    case PF_Param_POPUP:
        return std::llround(value.one_d);
    case PF_Param_CHECKBOX:
        return value.one_d != 0;
    case PF_Param_COLOR:
        return {static_cast<float>(value.color.redF), static_cast<float>(value.color.greenF),
                static_cast<float>(value.color.blueF), static_cast<float>(value.color.alphaF)};
    case PF_Param_POINT:
        return {static_cast<float>(value.two_d.x), static_cast<float>(value.two_d.y)};
    default:
        return static_cast<float>(value.one_d);
    }
}

const char* displayOf(const PF_ParamDef& definition) {
    if (definition.param_type != PF_Param_FIX_SLIDER)
        return nullptr;
    switch (definition.u.fs_d.display_flags) {
    case PF_ValueDisplayFlag_PERCENT:
        return "percent";
    case PF_ValueDisplayFlag_PIXEL:
        return "pixel";
    default:
        return nullptr;
    }
}

} // namespace

const char* kindName(PF_ParamType kind) {
    return kindNames.at(static_cast<std::size_t>(kind));
}

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

std::optional<Range> rangeOf(const PF_ParamDef& definition) {
    const PF_ParamDefUnion& u = definition.u;
    switch (definition.param_type) {
    case PF_Param_SLIDER:
        return moreThanOne(u.sd.valid_min, u.sd.valid_max);
    case PF_Param_FIX_SLIDER:
        return moreThanOne(u.fs_d.valid_min / fixedOne, u.fs_d.valid_max / fixedOne);
    case PF_Param_ANGLE:
        return moreThanOne(u.ad.valid_min / fixedOne, u.ad.valid_max / fixedOne);
    default:
        return std::nullopt;
    }
}

std::string faultOfNumber(const PF_ParamDef& definition, double number) {
    const PF_ParamType kind = definition.param_type;
    if (kind == PF_Param_CHECKBOX)
        return number == 0 || number == 1 ? "" : "is neither true nor false";
    const bool isWhole = kind == PF_Param_SLIDER || kind == PF_Param_POPUP;
    if (isWhole && !(std::abs(number) <= INT32_MAX && number == std::floor(number)))
        return "is not a whole number";
    if (!isWhole && !(std::abs(number) <= mostFixed))
        return "is out of range, a control holds -32768 to 32768";
    std::optional<Range> range = rangeOf(definition);
    if (kind == PF_Param_COLOR)
        range = Range{0, 1};
    else if (kind == PF_Param_POPUP)
        range = Range{1, std::max(1.0, static_cast<double>(definition.u.pd.num_choices))};
    // As the control counts: the ends of a range are rounded, too.
    const bool isFixed = kind == PF_Param_FIX_SLIDER || kind == PF_Param_ANGLE;
    const double counted = isFixed ? hostkit::toFixed(number) / fixedOne : number;
    if (range && (counted < range->low || counted > range->high))
        return "is out of range, " + numberText(range->low) + " to " + numberText(range->high);
    return "";
}

bool mayBeDefault(const PF_ParamDef& definition, double number) {
    const PF_ParamDefUnion& u = definition.u;
    switch (definition.param_type) {
    case PF_Param_SLIDER:
        return number == u.sd.dephault;
    case PF_Param_FIX_SLIDER:
        return hostkit::toFixed(number) == u.fs_d.dephault;
    case PF_Param_ANGLE:
        return hostkit::toFixed(number) == u.ad.dephault;
    default:
        return definition.param_type == PF_Param_COLOR || definition.param_type == PF_Param_POINT;
    }
}

std::vector<std::string> choicesOf(const PF_PopupDef& popup) {
    std::vector<std::string> choices;
    std::string_view names = popup.u.namesptr;
    for (int number = 1; number <= popup.num_choices; ++number) {
        const std::size_t end = names.find('|');
        choices.emplace_back(names.substr(0, end));
        if (choices.back().empty())
            choices.back() = std::to_string(number);
        names.remove_prefix(end == std::string_view::npos ? names.size() : end + 1);
    }
    return choices;
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
        text.append("\n  ").append(nameOf(effect, index)).append(": ");
        text.append(kindName(definition.param_type));
        if (const auto range = rangeOf(definition))
            text.append(" from " + numberText(range->low) + " to " + numberText(range->high));
        if (definition.param_type != PF_Param_POPUP)
            continue;
        const std::vector<std::string> choices = choicesOf(definition.u.pd);
        for (std::size_t i = 0; i < choices.size(); ++i)
            text.append(i == 0 ? " " : ", ").append(std::to_string(i + 1) + " " + choices[i]);
    }
    return text.empty() ? "\n  none" : text;
}

Json controlAsJson(hostkit::Effect& effect, std::size_t index, double seconds) {
    const PF_ParamDef& definition = effect.definitions.at(index);
    const PF_ParamType kind = definition.param_type;
    const hostkit::StreamValue value = effect.control(index).at(seconds - effect.layer->inSeconds);
    const std::optional<Range> range = rangeOf(definition);
    const char* display = displayOf(definition);
    return {{"index", index},
            {"name", nameOf(effect, index)},
            {"kind", kindName(kind)},
            {"value", valueAsJson(kind, value.value, *effect.layer)},
            {"default", defaultAsJson(effect, definition)},
            {"range", range ? Json{shortFixed(range->low), shortFixed(range->high)} : Json()},
            {"choices", kind == PF_Param_POPUP ? Json(choicesOf(definition.u.pd)) : Json()},
            {"display", display == nullptr ? Json() : Json(display)},
            {"hidden", effect.control(index).isHidden()}};
}

} // namespace pbhost
