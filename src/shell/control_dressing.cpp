#include "shell/control_dressing.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "host/suite_table.h"
#include "sdk/pf_suites.h"
#include "shell/control_layout.h"
#include "shell/control_values.h"
#include "support/utf.h"

namespace {

constexpr double fixedLimit = 32767.0; // of the plain sliders

std::string_view labelOf(const pbParameter& parameter) {
    for (const pbName* name : {&parameter.aeDisplayName, &parameter.displayName})
        if (!nameText(*name).empty())
            return nameText(*name);
    return nameText(parameter.name);
}

void writeName(PF_ParamDef& definition, std::string_view name) {
    std::fill(std::begin(definition.name), std::end(definition.name), '\0');
    std::copy_n(name.begin(), std::min(name.size(), std::size(definition.name) - 1),
                definition.name);
}

// "[k]" behind the label, which makes room for it.
void writeNumberedName(PF_ParamDef& definition, std::string_view label, std::int32_t k,
                       std::int32_t count) {
    std::string name(utf8Prefix(label, count < 10 ? 28 : 27));
    name.append("[").append(std::to_string(k)).append("]");
    writeName(definition, name);
}

// What a definition is made of, for component k.
struct Source {
    const PF_InData& inData;
    const pbParameter& parameter;
    std::size_t k;

    PF_Fixed fixed(const pbValueSlot& slot) const {
        return toFixed(componentNumber(parameter.type, slot.value, k));
    }
};

void defineAngle(PF_AngleDef& angle, const Source& source) {
    angle.dephault = source.fixed(source.parameter.defaultValue);
    angle.valid_min = source.fixed(source.parameter.minValue);
    angle.valid_max = source.fixed(source.parameter.maxValue);
}

void defineFixedSlider(PF_FixedSliderDef& slider, const Source& source, std::int16_t display) {
    slider.dephault = source.fixed(source.parameter.defaultValue);
    slider.valid_min = slider.slider_min = source.fixed(source.parameter.minValue);
    slider.valid_max = slider.slider_max = source.fixed(source.parameter.maxValue);
    slider.display_flags = display;
}

// A plain slider goes no further than the host's widest.
void definePlainFixedSlider(PF_FixedSliderDef& slider, const Source& source) {
    defineFixedSlider(slider, source, 0);
    slider.valid_min = slider.slider_min = std::max(slider.valid_min, toFixed(-fixedLimit));
    slider.valid_max = slider.slider_max = std::min(slider.valid_max, toFixed(fixedLimit));
}

void defineSlider(PF_SliderDef& slider, const Source& source) {
    const pbParameter& parameter = source.parameter;
    slider.dephault = parameter.defaultValue.value.ints[source.k];
    slider.valid_min = slider.slider_min = parameter.minValue.value.ints[source.k];
    slider.valid_max = slider.slider_max = parameter.maxValue.value.ints[source.k];
}

PF_Fixed percentOf(double part, A_long whole) {
    return whole == 0 ? 0 : toFixed(part * 100 / whole);
}

void definePoint(PF_PointDef& point, const Source& source) {
    const pbValue& value = source.parameter.defaultValue.value;
    point.x_dephault =
        percentOf(componentNumber(source.parameter.type, value, 0), source.inData.width);
    point.y_dephault =
        percentOf(componentNumber(source.parameter.type, value, 1), source.inData.height);
}

void defineRelativePoint(PF_PointDef& point, const pbPointDefault& relative) {
    point.x_dephault = toFixed(relative.x * 100.0);
    point.y_dephault = toFixed(relative.y * 100.0);
}

std::uint8_t colorByte(const pbParameter& parameter, std::size_t component) {
    const double number =
        componentNumber(parameter.type, parameter.defaultValue.value, component) * 255;
    return static_cast<std::uint8_t>(std::clamp(std::isnan(number) ? 0 : number, 0.0, 255.0));
}

void defineColor(PF_ColorDef& color, const pbParameter& parameter) {
    color.dephault = {colorByte(parameter, 3), colorByte(parameter, 0), colorByte(parameter, 1),
                      colorByte(parameter, 2)};
}

void definePopup(PF_PopupDef& popup, const pbParameter& parameter, std::int64_t lastChoice,
                 const pbText& choices) {
    constexpr std::int64_t mostChoices = INT16_MAX;
    popup.value = parameter.defaultValue.value.ints[0];
    popup.num_choices =
        static_cast<std::int16_t>(std::clamp<std::int64_t>(lastChoice + 1, 1, mostChoices));
    popup.u.namesptr = choices.c_str();
}

std::int64_t numberOfNames(std::string_view choices) {
    return choices.empty() ? 0 : std::count(choices.begin(), choices.end(), '|') + 1;
}

void define(PF_ParamDef& definition, const Source& source) {
    const pbParameter& parameter = source.parameter;
    const std::int64_t largest = parameter.maxValue.value.ints[0];
    PF_ParamDefUnion& u = definition.u;
    switch (controlForm(parameter)) {
    case ControlForm::Popup:
        definePopup(u.pd, parameter,
                    std::max(numberOfNames(parameter.aePopupString.view()), largest),
                    parameter.aePopupString);
        break;
    case ControlForm::Enum:
        definePopup(u.pd, parameter, largest, parameter.enumValues);
        break;
    case ControlForm::Angle:
        definition.flags |= PF_ParamFlag_START_COLLAPSED;
        defineAngle(u.ad, source);
        break;
    case ControlForm::AngleDegrees:
        defineAngle(u.ad, source);
        break;
    case ControlForm::PercentSlider:
    case ControlForm::Percentages:
        definition.flags |= PF_ParamFlag_START_COLLAPSED;
        defineFixedSlider(u.fs_d, source, PF_ValueDisplayFlag_PERCENT);
        break;
    case ControlForm::OneChannelColor:
        definition.flags |= PF_ParamFlag_START_COLLAPSED;
        defineFixedSlider(u.fs_d, source, PF_ValueDisplayFlag_PIXEL);
        break;
    case ControlForm::Point:
        if (parameter.aePointRelativeDefaultValue.isSet)
            defineRelativePoint(u.td, parameter.aePointRelativeDefaultValue);
        else
            definePoint(u.td, source);
        break;
    case ControlForm::Position:
        definePoint(u.td, source);
        break;
    case ControlForm::Color:
    case ControlForm::ColorRGB:
    case ControlForm::ColorRGBA:
        defineColor(u.cd, parameter);
        break;
    case ControlForm::Ints:
        definition.flags |= PF_ParamFlag_START_COLLAPSED;
        defineSlider(u.sd, source);
        break;
    case ControlForm::Floats:
        definition.flags |= PF_ParamFlag_START_COLLAPSED;
        definePlainFixedSlider(u.fs_d, source);
        break;
    case ControlForm::Bools:
        u.bd.dephault = parameter.defaultValue.value.bytes[source.k];
        break;
    case ControlForm::None:
        break;
    }
}

// Hands definitions to the host, up to its first error.
class Dresser {
public:
    Dresser(const PF_InData& inData, PF_ParamDef** params)
        : inData_(inData), params_(params), suites_(inData.pica_basicP),
          suite_(suites_.suite<PF_ParamUtilsSuite1>()) {}

    void dressImage(const ImageNode& image) {
        writeName(*params_[image.slot], nameText(image.name));
        update(image.slot);
    }

    void dressControl(const pbParameter& parameter, std::int32_t k, std::int32_t index) {
        PF_ParamDef& definition = *params_[index];
        const std::int32_t count = controlsOf(parameter);
        if (count == 1)
            writeName(definition, labelOf(parameter));
        else
            writeNumberedName(definition, labelOf(parameter), k, count);
        define(definition, {inData_, parameter, static_cast<std::size_t>(k)});
        update(index);
    }

    PF_Err error() const { return error_; }

private:
    void update(std::int32_t index) {
        if (error_ == PF_Err_NONE)
            error_ = suite_->PF_UpdateParamUI(inData_.effect_ref, index, params_[index]);
    }

    const PF_InData& inData_;
    PF_ParamDef** params_;
    SuiteTable suites_;
    const PF_ParamUtilsSuite1* suite_;
    PF_Err error_ = PF_Err_NONE;
};

} // namespace

PF_Err dressControls(const PF_InData& inData, const pbGraph& graph, PF_ParamDef** params) {
    Dresser dresser(inData, params);
    forEachLayerImage(graph, [&](const ImageNode& image) { dresser.dressImage(image); });
    forEachControl(graph, [&](const pbParameter& parameter, std::int32_t k, std::int32_t index) {
        dresser.dressControl(parameter, k, index);
    });
    return dresser.error();
}
