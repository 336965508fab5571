#include "shell/controls/control_forms.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "shell/controls/control_values.h"

namespace {

double component(const ControlSource& source, std::size_t k) {
    return componentNumber(source.parameter.type, source.parameter.defaultValue.value, k);
}

PF_Fixed fixed(const ControlSource& source, const pbValueSlot& slot) {
    return toFixed(componentNumber(source.parameter.type, slot.value, source.k));
}

AEGP_StreamVal2 defaultNumber(const ControlSource& source) {
    AEGP_StreamVal2 value{};
    value.one_d = component(source, source.k);
    return value;
}

// Popups.

void configureChoices(PF_PopupDef& popup, const ControlSource& source, std::int64_t lastChoice,
                      const pbText& choices) {
    constexpr std::int64_t mostChoices = INT16_MAX;
    popup.value = source.parameter.defaultValue.value.ints[0];
    popup.num_choices =
        static_cast<std::int16_t>(std::clamp<std::int64_t>(lastChoice + 1, 1, mostChoices));
    popup.u.namesptr = choices.c_str();
}

std::int64_t numberOfNames(std::string_view choices) {
    return choices.empty() ? 0 : std::count(choices.begin(), choices.end(), '|') + 1;
}

void configurePopup(PF_ParamDef& definition, const ControlSource& source) {
    const pbText& choices = source.parameter.aePopupString;
    const std::int64_t largest = source.parameter.maxValue.value.ints[0];
    configureChoices(definition.u.pd, source, std::max(numberOfNames(choices.view()), largest),
                     choices);
}

void configureEnum(PF_ParamDef& definition, const ControlSource& source) {
    configureChoices(definition.u.pd, source, source.parameter.maxValue.value.ints[0],
                     source.parameter.enumValues);
}

void readChoice(const PF_ParamDefUnion& control, std::size_t, const Downsampling&, pbValue& value) {
    value.ints[0] = control.pd.value - 1; // the host counts choices from 1
}

// Angles.

void configureAngle(PF_ParamDef& definition, const ControlSource& source) {
    PF_AngleDef& angle = definition.u.ad;
    angle.dephault = fixed(source, source.parameter.defaultValue);
    angle.valid_min = fixed(source, source.parameter.minValue);
    angle.valid_max = fixed(source, source.parameter.maxValue);
}

void configureCollapsedAngle(PF_ParamDef& definition, const ControlSource& source) {
    definition.flags |= PF_ParamFlag_START_COLLAPSED;
    configureAngle(definition, source);
}

void readAngle(const PF_ParamDefUnion& control, std::size_t, const Downsampling&, pbValue& value) {
    value.floats[0] = fromFixed(control.ad.value);
}

// Sliders.

template<std::int16_t display>
void configureFixedSlider(PF_ParamDef& definition, const ControlSource& source) {
    definition.flags |= PF_ParamFlag_START_COLLAPSED;
    PF_FixedSliderDef& slider = definition.u.fs_d;
    slider.dephault = fixed(source, source.parameter.defaultValue);
    slider.valid_min = slider.slider_min = fixed(source, source.parameter.minValue);
    slider.valid_max = slider.slider_max = fixed(source, source.parameter.maxValue);
    slider.display_flags = display;
}

// A plain slider has the widest range of the host's sliders at most.
void configurePlainSlider(PF_ParamDef& definition, const ControlSource& source) {
    constexpr double widest = 32767.0;
    configureFixedSlider<0>(definition, source);
    PF_FixedSliderDef& slider = definition.u.fs_d;
    slider.valid_min = slider.slider_min = std::max(slider.valid_min, toFixed(-widest));
    slider.valid_max = slider.slider_max = std::min(slider.valid_max, toFixed(widest));
}

void readFixed(const PF_ParamDefUnion& control, std::size_t k, const Downsampling&,
               pbValue& value) {
    value.floats[k] = fromFixed(control.fs_d.value);
}

void configureSlider(PF_ParamDef& definition, const ControlSource& source) {
    definition.flags |= PF_ParamFlag_START_COLLAPSED;
    const pbParameter& parameter = source.parameter;
    PF_SliderDef& slider = definition.u.sd;
    slider.dephault = parameter.defaultValue.value.ints[source.k];
    slider.valid_min = slider.slider_min = parameter.minValue.value.ints[source.k];
    slider.valid_max = slider.slider_max = parameter.maxValue.value.ints[source.k];
}

void readSlider(const PF_ParamDefUnion& control, std::size_t k, const Downsampling&,
                pbValue& value) {
    value.ints[k] = control.sd.value;
}

// Checkboxes.

void configureCheckbox(PF_ParamDef& definition, const ControlSource& source) {
    definition.u.bd.dephault = source.parameter.defaultValue.value.bytes[source.k];
}

void readCheckbox(const PF_ParamDefUnion& control, std::size_t k, const Downsampling&,
                  pbValue& value) {
    value.bytes[k] = control.bd.value != 0 ? 1 : 0;
}

// Points.

PF_Fixed percentOf(double part, A_long whole) {
    return whole == 0 ? 0 : toFixed(part * 100 / whole);
}

void configurePosition(PF_ParamDef& definition, const ControlSource& source) {
    definition.u.td.x_dephault = percentOf(component(source, 0), source.inData.width);
    definition.u.td.y_dephault = percentOf(component(source, 1), source.inData.height);
}

void configurePoint(PF_ParamDef& definition, const ControlSource& source) {
    const pbPointDefault& relative = source.parameter.aePointRelativeDefaultValue;
    if (!relative.isSet)
        return configurePosition(definition, source);
    definition.u.td.x_dephault = toFixed(relative.x * 100.0);
    definition.u.td.y_dephault = toFixed(relative.y * 100.0);
}

AEGP_StreamVal2 defaultPosition(const ControlSource& source) {
    AEGP_StreamVal2 value{};
    value.two_d = {component(source, 0), component(source, 1)};
    return value;
}

AEGP_StreamVal2 defaultPoint(const ControlSource& source) {
    const pbPointDefault& relative = source.parameter.aePointRelativeDefaultValue;
    if (!relative.isSet)
        return defaultPosition(source);
    AEGP_StreamVal2 value{};
    value.two_d = {relative.x * static_cast<double>(source.inData.width),
                   relative.y * static_cast<double>(source.inData.height)};
    return value;
}

void readPoint(const PF_ParamDefUnion& control, std::size_t, const Downsampling& downsampling,
               pbValue& value) {
    value.floats[0] = fromFixed(control.td.x_value) / downsampling.x;
    value.floats[1] = fromFixed(control.td.y_value) / downsampling.y;
}

// Colours.

std::uint8_t colorByte(const ControlSource& source, std::size_t k) {
    const double number = component(source, k) * 255;
    return static_cast<std::uint8_t>(std::clamp(std::isnan(number) ? 0 : number, 0.0, 255.0));
}

void configureColor(PF_ParamDef& definition, const ControlSource& source) {
    definition.u.cd.dephault = {colorByte(source, 3), colorByte(source, 0), colorByte(source, 1),
                                colorByte(source, 2)};
}

AEGP_StreamVal2 defaultColor(const ControlSource& source) {
    const bool isOpaque = source.parameter.parameterType == pbParameterColorRGB;
    AEGP_StreamVal2 value{};
    value.color = {isOpaque ? 1.0 : component(source, 3), component(source, 0),
                   component(source, 1), component(source, 2)};
    return value;
}

void readColorRGB(const PF_ParamDefUnion& control, std::size_t, const Downsampling&,
                  pbValue& value) {
    const PF_Pixel& color = control.cd.value;
    value.floats[0] = static_cast<float>(color.red / 255.0);
    value.floats[1] = static_cast<float>(color.green / 255.0);
    value.floats[2] = static_cast<float>(color.blue / 255.0);
}

void readColor(const PF_ParamDefUnion& control, std::size_t k, const Downsampling& downsampling,
               pbValue& value) {
    readColorRGB(control, k, downsampling, value);
    value.floats[3] = static_cast<float>(control.cd.value.alpha / 255.0);
}

constexpr auto configurePercent = configureFixedSlider<PF_ValueDisplayFlag_PERCENT>;
constexpr auto configureChannel = configureFixedSlider<PF_ValueDisplayFlag_PIXEL>;

constexpr pbUIControl noHint = pbControlNone;
constexpr pbParameterType anyType = pbParameterNone;
constexpr pbScalarKind anyScalar = pbScalarNone;

// clang-format off
constexpr std::array<ControlForm, 15> controlForms = {{
    {pbControlPopup,           anyType, anyScalar, PF_Param_POPUP,      false, configurePopup,          defaultNumber, readChoice},
    {pbControlAngle,           anyType, anyScalar, PF_Param_ANGLE,      false, configureCollapsedAngle, defaultNumber, readAngle},
    {pbControlPercentSlider,   anyType, anyScalar, PF_Param_FIX_SLIDER, false, configurePercent,        defaultNumber, readFixed},
    {pbControlOneChannelColor, anyType, anyScalar, PF_Param_FIX_SLIDER, false, configureChannel,        defaultNumber, readFixed},
    {pbControlPoint,           anyType, anyScalar, PF_Param_POINT,      false, configurePoint,          defaultPoint,  readPoint},
    {pbControlColor,           anyType, anyScalar, PF_Param_COLOR,      false, configureColor,          defaultColor,  readColor},
    {noHint, pbParameterAngleDegrees, anyScalar,   PF_Param_ANGLE,      false, configureAngle,    defaultNumber,   readAngle},
    {noHint, pbParameterPosition,     anyScalar,   PF_Param_POINT,      false, configurePosition, defaultPosition, readPoint},
    {noHint, pbParameterColorRGB,     anyScalar,   PF_Param_COLOR,      false, configureColor,    defaultColor,    readColorRGB},
    {noHint, pbParameterColorRGBA,    anyScalar,   PF_Param_COLOR,      false, configureColor,    defaultColor,    readColor},
    {noHint, pbParameterEnum,         anyScalar,   PF_Param_POPUP,      false, configureEnum,     defaultNumber,   readChoice},
    // Percent applies only to floats; integers and booleans are shown as usual.
    {noHint, pbParameterPercentage, pbScalarFloat, PF_Param_FIX_SLIDER, true,  configurePercent,     defaultNumber, readFixed},
    {noHint, anyType,               pbScalarInt,   PF_Param_SLIDER,     true,  configureSlider,      defaultNumber, readSlider},
    {noHint, anyType,               pbScalarFloat, PF_Param_FIX_SLIDER, true,  configurePlainSlider, defaultNumber, readFixed},
    {noHint, anyType,               pbScalarBool,  PF_Param_CHECKBOX,   true,  configureCheckbox,    defaultNumber, readCheckbox},
}};
// clang-format on

template<class Kind>
bool accepts(Kind wanted, Kind given) {
    return wanted == Kind{} || wanted == given;
}

} // namespace

const ControlForm* controlForm(const pbParameter& parameter) {
    if (componentCount(parameter.type) == 0)
        return nullptr;
    const pbScalarKind scalarKind = componentBase(parameter.type);
    const auto row = std::ranges::find_if(controlForms, [&](const ControlForm& form) {
        return accepts(form.hint, parameter.aeUIControl) &&
               accepts(form.parameterType, parameter.parameterType) &&
               accepts(form.scalarKind, scalarKind);
    });
    return row == controlForms.end() ? nullptr : &*row;
}
