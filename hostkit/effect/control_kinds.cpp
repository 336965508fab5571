#include "hostkit/effect/control_kinds.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "hostkit/services/text.h"

namespace hostkit {

namespace {

using U = PF_ParamDefUnion;

// Rounds to the nearest integer and clamps to the type's range.
template<typename Integer>
Integer toInteger(double value) {
    constexpr double low = std::numeric_limits<Integer>::min();
    constexpr double high = std::numeric_limits<Integer>::max();
    return static_cast<Integer>(std::clamp(std::round(value), low, high));
}

// Kinds with one number; the field stores it multiplied by `units`.

template<auto control, auto field, int units>
AEGP_StreamVal2 readNumber(const U& u, const Layer&) {
    return {{(u.*control.*field) / static_cast<double>(units)}};
}

template<auto control, auto convert>
void writeNumber(U& u, const AEGP_StreamVal2& value, const Layer&, const Resolution&) {
    (u.*control).value = convert(value.one_d);
}

template<auto control>
void configureAllButValue(U& u, const U& look) {
    const auto value = (u.*control).value;
    u.*control = look.*control;
    (u.*control).value = value;
}

template<auto control, int units>
std::optional<NumberRange> validRange(const U& u) {
    const double low = (u.*control).valid_min, high = (u.*control).valid_max;
    return low < high ? std::optional(NumberRange{low / units, high / units}) : std::nullopt;
}

double parsePlain(const U&, const std::string& text) {
    const auto number = parseNumber(text);
    if (!number)
        throw std::invalid_argument("\"" + text + "\" is not a number");
    return *number;
}

const char* displayOfSlider(const U& u) {
    return u.fs_d.display_flags == PF_ValueDisplayFlag_PERCENT ? "percent"
           : u.fs_d.display_flags == PF_ValueDisplayFlag_PIXEL ? "pixel"
                                                               : nullptr;
}

// Checkboxes.

template<auto field>
AEGP_StreamVal2 readTruth(const U& u, const Layer&) {
    return {{u.bd.*field != 0 ? 1.0 : 0.0}};
}

double parseTruth(const U&, const std::string& text) {
    if (text == "true" || text == "1")
        return 1;
    if (text == "false" || text == "0")
        return 0;
    throw std::invalid_argument("\"" + text + "\" is neither true nor false");
}

const char* faultOfCheckbox(const U& u) {
    return u.bd.u.nameptr == nullptr ? "the checkbox has no text" : nullptr;
}

// Popups.

std::optional<NumberRange> rangeOfPopup(const U& u) {
    return NumberRange{1, std::max(1.0, static_cast<double>(u.pd.num_choices))};
}

// A choice's number takes precedence over its text, an exact text over one with other case.
double parseChoice(const U& u, const std::string& text) {
    const std::vector<std::string> choices = choicesOf(u.pd);
    for (std::size_t i = 0; i < choices.size(); ++i)
        if (text == std::to_string(i + 1))
            return static_cast<double>(i + 1);
    for (const auto isMeant : {areEqual, areAlike})
        for (std::size_t i = 0; i < choices.size(); ++i)
            if (isMeant(choices[i], text))
                return static_cast<double>(i + 1);
    throw std::invalid_argument("there is no such choice");
}

const char* faultOfPopup(const U& u) {
    return u.pd.num_choices < 1         ? "the popup has no choices"
           : u.pd.u.namesptr == nullptr ? "the popup has no names of choices"
                                        : nullptr;
}

// Colours.

template<auto field>
AEGP_StreamVal2 readColor(const U& u, const Layer&) {
    const PF_Pixel& pixel = u.cd.*field;
    return {{pixel.alpha / 255.0, pixel.red / 255.0, pixel.green / 255.0, pixel.blue / 255.0}};
}

void writeColor(U& u, const AEGP_StreamVal2& value, const Layer&, const Resolution&) {
    const auto byte = [](double part) { return toInteger<std::uint8_t>(part * 255); };
    const AEGP_ColorVal& color = value.color;
    u.cd.value = {byte(color.alphaF), byte(color.redF), byte(color.greenF), byte(color.blueF)};
}

std::optional<NumberRange> rangeOfColor(const U&) {
    return NumberRange{0, 1};
}

// Points.

template<auto x, auto y>
AEGP_StreamVal2 readPoint(const U& u, const Layer& layer) {
    const Item& frame = frameItem(layer);
    return {{u.td.*x / fixedOne / 100 * frame.width, u.td.*y / fixedOne / 100 * frame.height}};
}

double factor(const A_Ratio& ratio) {
    return static_cast<double>(ratio.num) / ratio.den;
}

void writePoint(U& u, const AEGP_StreamVal2& value, const Layer&, const Resolution& resolution) {
    u.td.x_value = toFixed(value.two_d.x * factor(resolution.x));
    u.td.y_value = toFixed(value.two_d.y * factor(resolution.y));
}

void configurePoint(U& u, const U& look) {
    u.td.restrict_bounds = look.td.restrict_bounds;
    u.td.x_dephault = look.td.x_dephault;
    u.td.y_dephault = look.td.y_dephault;
}

// Layers.

AEGP_StreamVal2 startLayer(const U& u, const Layer& layer) {
    AEGP_StreamVal2 value{};
    value.layer_id = u.ld.dephault == 0 ? 0 : layer.id;
    return value;
}

void writeLayer(U& u, const AEGP_StreamVal2& value, const Layer& layer,
                const Resolution& resolution) {
    const Layer* chosen = chosenLayer({value}, layer);
    const A_long dephault = u.ld.dephault;
    u.ld = {};
    u.ld.dephault = dephault;
    if (chosen == nullptr)
        return;
    u.ld.reserved0 = const_cast<Layer*>(chosen);
    const PF_LRect bounds = frameOf(chosen, resolution);
    u.ld.width = bounds.right;
    u.ld.height = bounds.bottom;
    u.ld.pix_aspect_ratio = frameItem(*chosen).pixelAspect;
}

// Layer controls have nothing to configure.
void configureNothing(U&, const U&) {}

constexpr std::array<ControlKind, 8> kinds = {{
    {.type = PF_Param_LAYER,
     .name = "layer",
     .streamType = AEGP_StreamType_LAYER_ID,
     .format = NumberFormat::Fraction,
     .numbers = 0,
     .start = startLayer,
     .defaultValue = startLayer,
     .write = writeLayer,
     .configure = configureNothing},
    {.type = PF_Param_SLIDER,
     .name = "slider",
     .streamType = AEGP_StreamType_OneD,
     .format = NumberFormat::Whole,
     .defaultFit = DefaultFit::Exactly,
     .isRangeShown = true,
     .start = readNumber<&U::sd, &PF_SliderDef::value, 1>,
     .defaultValue = readNumber<&U::sd, &PF_SliderDef::dephault, 1>,
     .write = writeNumber<&U::sd, toInteger<A_long>>,
     .configure = configureAllButValue<&U::sd>,
     .range = validRange<&U::sd, 1>,
     .parse = parsePlain},
    {.type = PF_Param_FIX_SLIDER,
     .name = "fixed slider",
     .streamType = AEGP_StreamType_OneD,
     .format = NumberFormat::Fixed,
     .defaultFit = DefaultFit::Exactly,
     .isRangeShown = true,
     .start = readNumber<&U::fs_d, &PF_FixedSliderDef::value, fixedUnits>,
     .defaultValue = readNumber<&U::fs_d, &PF_FixedSliderDef::dephault, fixedUnits>,
     .write = writeNumber<&U::fs_d, toFixed>,
     .configure = configureAllButValue<&U::fs_d>,
     .range = validRange<&U::fs_d, fixedUnits>,
     .parse = parsePlain,
     .display = displayOfSlider},
    {.type = PF_Param_ANGLE,
     .name = "angle",
     .streamType = AEGP_StreamType_OneD,
     .format = NumberFormat::Fixed,
     .defaultFit = DefaultFit::Exactly,
     .isRangeShown = true,
     .start = readNumber<&U::ad, &PF_AngleDef::value, fixedUnits>,
     .defaultValue = readNumber<&U::ad, &PF_AngleDef::dephault, fixedUnits>,
     .write = writeNumber<&U::ad, toFixed>,
     .configure = configureAllButValue<&U::ad>,
     .range = validRange<&U::ad, fixedUnits>,
     .parse = parsePlain},
    {.type = PF_Param_CHECKBOX,
     .name = "checkbox",
     .streamType = AEGP_StreamType_OneD,
     .format = NumberFormat::Truth,
     .defaultFit = DefaultFit::WithinRange,
     .start = readTruth<&PF_CheckBoxDef::value>,
     .defaultValue = readTruth<&PF_CheckBoxDef::dephault>,
     .write = writeNumber<&U::bd, toInteger<A_long>>,
     .configure = configureAllButValue<&U::bd>,
     .parse = parseTruth,
     .fault = faultOfCheckbox},
    {.type = PF_Param_COLOR,
     .name = "color",
     .streamType = AEGP_StreamType_COLOR,
     .format = NumberFormat::Fraction,
     .numbers = 4,
     .fewestNumbers = 3,
     .order = {3, 0, 1, 2},
     .start = readColor<&PF_ColorDef::value>,
     .defaultValue = readColor<&PF_ColorDef::dephault>,
     .write = writeColor,
     .configure = configureAllButValue<&U::cd>,
     .range = rangeOfColor,
     .parse = parsePlain},
    {.type = PF_Param_POINT,
     .name = "point",
     .streamType = AEGP_StreamType_TwoD,
     .format = NumberFormat::Fraction,
     .numbers = 2,
     .start = readPoint<&PF_PointDef::x_value, &PF_PointDef::y_value>,
     .defaultValue = readPoint<&PF_PointDef::x_dephault, &PF_PointDef::y_dephault>,
     .write = writePoint,
     .configure = configurePoint,
     .parse = parsePlain},
    {.type = PF_Param_POPUP,
     .name = "popup",
     .streamType = AEGP_StreamType_OneD,
     .format = NumberFormat::Whole,
     .defaultFit = DefaultFit::WithinRange,
     .hasChoices = true,
     .start = readNumber<&U::pd, &PF_PopupDef::value, 1>,
     .defaultValue = readNumber<&U::pd, &PF_PopupDef::dephault, 1>,
     .write = writeNumber<&U::pd, toInteger<A_long>>,
     .configure = configureAllButValue<&U::pd>,
     .range = rangeOfPopup,
     .parse = parseChoice,
     .fault = faultOfPopup},
}};

const ControlKind* findKind(PF_ParamType type) {
    const auto row = std::ranges::find(kinds, type, &ControlKind::type);
    return row == kinds.end() ? nullptr : &*row;
}

} // namespace

const ControlKind& kindOf(const PF_ParamDef& definition) {
    return *findKind(definition.param_type);
}

std::vector<double> numbersOf(const ControlKind& kind, const AEGP_StreamVal2& value) {
    std::vector<double> numbers(kind.numbers);
    for (std::size_t k = 0; k < kind.numbers; ++k)
        numbers[kind.order[k]] = value.four_d[k];
    return numbers;
}

AEGP_StreamVal2 valueOf(const ControlKind& kind, const std::vector<double>& numbers) {
    AEGP_StreamVal2 value{};
    for (std::size_t k = 0; k < kind.numbers; ++k)
        value.four_d[k] = numbers[kind.order[k]];
    return value;
}

bool isLayerControl(const PF_ParamDef& definition) {
    return definition.param_type == PF_Param_LAYER;
}

Layer* chosenLayer(const StreamValue& value, const Layer& layer) {
    return value.value.layer_id == 0 ? nullptr : layer.composition->findLayer(value.value.layer_id);
}

std::string faultOf(const PF_ParamDef& definition) {
    const ControlKind* kind = findKind(definition.param_type);
    if (kind == nullptr)
        return "kind " + std::to_string(definition.param_type) + " is unknown";
    if (std::memchr(definition.name, 0, sizeof definition.name) == nullptr)
        return "the name does not end within its 32 bytes";
    const char* fault = kind->fault == nullptr ? nullptr : kind->fault(definition.u);
    return fault == nullptr ? "" : fault;
}

int choiceCount(const PF_ParamDef& definition) {
    return kindOf(definition).hasChoices ? definition.u.pd.num_choices : 0;
}

bool hasNamesForChoices(const PF_PopupDef& popup) {
    const std::string_view names = popup.u.namesptr;
    // One missing name is allowed, because some kernels count choices from 0.
    return std::ranges::count(names, '|') + 1 >= popup.num_choices - 1;
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

std::vector<std::string> namedChoicesOf(const PF_PopupDef& popup) {
    std::vector<std::string> choices = choicesOf(popup);
    const std::string_view names = popup.u.namesptr;
    const auto count = names.empty() ? 0 : std::ranges::count(names, '|') + 1;
    if (count > 0 && count == std::ssize(choices) - 1)
        choices.pop_back();
    return choices;
}

const Item& frameItem(const Layer& layer) {
    if (layer.source != nullptr)
        return *layer.source;
    return *layer.composition;
}

std::optional<double> parseNumber(std::string_view text) {
    double number = 0;
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

} // namespace hostkit
