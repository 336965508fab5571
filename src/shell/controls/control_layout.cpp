#include "shell/controls/control_layout.h"

#include "sdk/pf_fixed.h"

namespace {

constexpr A_long widestValue = 32767;
constexpr A_long sliderReach = 254;
constexpr PF_Fixed middle = 50 * fixedUnits; // percent
constexpr PF_Pixel red = {255, 255, 0, 0};

constexpr char popupChoices[] = "0|1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|21|22|23|24|"
                                "25|26|27|28|29|30|31";

void defineLayer(PF_ParamDef&) {}

void defineCheckbox(PF_ParamDef& definition) {
    definition.u.bd.u.nameptr = "";
}

void definePopup(PF_ParamDef& definition) {
    PF_PopupDef& popup = definition.u.pd;
    popup.value = 1;
    popup.num_choices = 32;
    popup.dephault = 1;
    popup.u.namesptr = popupChoices;
}

void defineSlider(PF_ParamDef& definition) {
    PF_SliderDef& slider = definition.u.sd;
    slider.valid_min = -widestValue;
    slider.valid_max = widestValue;
    slider.slider_min = -sliderReach;
    slider.slider_max = sliderReach;
}

void defineFixedSlider(PF_ParamDef& definition) {
    PF_FixedSliderDef& slider = definition.u.fs_d;
    slider.valid_min = -widestValue * fixedUnits;
    slider.valid_max = widestValue * fixedUnits;
    slider.slider_min = -sliderReach * fixedUnits;
    slider.slider_max = sliderReach * fixedUnits;
    slider.precision = 1;
}

void definePoint(PF_ParamDef& definition) {
    PF_PointDef& point = definition.u.td;
    point.x_value = point.y_value = point.x_dephault = point.y_dephault = middle;
}

void defineAngle(PF_ParamDef& definition) {
    definition.flags = PF_ParamFlag_START_COLLAPSED;
}

void defineColor(PF_ParamDef& definition) {
    definition.u.cd.value = definition.u.cd.dephault = red;
}

// Assigns the controls of each pool, from its first one.
class FreeControls {
public:
    // The first of `count` adjacent controls, or -1 if too few are left; a later parameter may need
    // fewer.
    std::int32_t take(PF_ParamType type, std::int32_t count) {
        for (std::size_t i = 0; i < controlPools.size(); ++i) {
            if (controlPools[i].type != type)
                continue;
            const std::int32_t first = controlPools[i].first + taken_[i];
            if (count > controlPools[i].end() - first)
                return -1;
            taken_[i] += count;
            return first;
        }
        return -1;
    }

private:
    std::array<std::int32_t, std::tuple_size_v<decltype(controlPools)>> taken_{};
};

} // namespace

constexpr std::array<ControlPool, 8> controlPools = {{
    {PF_Param_LAYER, 1, layerControlCount, "layer2", defineLayer},
    {PF_Param_CHECKBOX, 4, 20, "checkbox", defineCheckbox},
    {PF_Param_POPUP, 24, 10, "popup", definePopup},
    {PF_Param_SLIDER, 34, 10, "slider", defineSlider},
    {PF_Param_FIX_SLIDER, 44, 50, "fixed", defineFixedSlider},
    {PF_Param_POINT, 94, 10, "point", definePoint},
    {PF_Param_ANGLE, 104, 10, "angle", defineAngle},
    {PF_Param_COLOR, 114, 10, "color", defineColor},
}};

std::int32_t controlsOf(const pbParameter& parameter) {
    const ControlForm* form = controlForm(parameter);
    return form == nullptr || form->isPerComponent ? componentCount(parameter.type) : 1;
}

void assignSlots(pbGraph& graph) {
    for (std::int32_t i = 0; i < graph.imageNodeCount(); ++i)
        graph.imageNodeAt(i)->slot = i <= layerControlCount ? i : -1;
    FreeControls controls;
    for (const auto& parameter : graph.parameters) {
        const ControlForm* form = controlForm(parameter->parameter);
        parameter->slot =
            form == nullptr ? -1 : controls.take(form->pool, controlsOf(parameter->parameter));
    }
}
