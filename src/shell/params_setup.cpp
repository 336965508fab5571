// Declares the fixed list of controls to the host.
#include <algorithm>
#include <string_view>

#include "host/host_services.h"
#include "shell/commands.h"
#include "shell/control_layout.h"

namespace {

constexpr PF_Fixed fixedOne = 1 << 16;

constexpr A_long widestValue = 32767;
constexpr A_long sliderReach = 254;
constexpr PF_Fixed middle = 50 * fixedOne; // percent
constexpr PF_Pixel red = {255, 255, 0, 0};

constexpr char popupChoices[] = "0|1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|21|22|23|24|"
                                "25|26|27|28|29|30|31";

void setUpSlider(PF_SliderDef& slider) {
    slider.valid_min = -widestValue;
    slider.valid_max = widestValue;
    slider.slider_min = -sliderReach;
    slider.slider_max = sliderReach;
}

void setUpFixedSlider(PF_FixedSliderDef& slider) {
    slider.valid_min = -widestValue * fixedOne;
    slider.valid_max = widestValue * fixedOne;
    slider.slider_min = -sliderReach * fixedOne;
    slider.slider_max = sliderReach * fixedOne;
    slider.precision = 1;
}

void setUpPopup(PF_PopupDef& popup) {
    popup.value = 1;
    popup.num_choices = 32;
    popup.dephault = 1;
    popup.u.namesptr = popupChoices;
}

// Fills in what differs from a record of zeros.
void setUp(PF_ParamDef& definition) {
    PF_ParamDefUnion& u = definition.u;
    switch (definition.param_type) {
    case PF_Param_CHECKBOX:
        u.bd.u.nameptr = "";
        break;
    case PF_Param_POPUP:
        setUpPopup(u.pd);
        break;
    case PF_Param_SLIDER:
        setUpSlider(u.sd);
        break;
    case PF_Param_FIX_SLIDER:
        setUpFixedSlider(u.fs_d);
        break;
    case PF_Param_POINT:
        u.td.x_value = u.td.y_value = u.td.x_dephault = u.td.y_dephault = middle;
        break;
    case PF_Param_ANGLE:
        definition.flags = PF_ParamFlag_START_COLLAPSED;
        break;
    case PF_Param_COLOR:
        u.cd.value = u.cd.dephault = red;
        break;
    default:
        break;
    }
}

PF_ParamDef declare(const ControlPool& pool, std::int32_t index) {
    PF_ParamDef definition{};
    definition.uu.id = index;
    definition.param_type = pool.type;
    const std::string_view name = pool.name;
    std::copy(name.begin(), name.end(), definition.name);
    setUp(definition);
    return definition;
}

} // namespace

PF_Err ParamsSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** /*params*/,
                   PF_LayerDef* /*output*/) {
    for (const ControlPool& pool : controlPools)
        for (std::int32_t index = pool.first; index < pool.end(); ++index) {
            PF_ParamDef definition = declare(pool, index);
            const PF_Err error = in_data->inter.add_param(in_data->effect_ref, -1, &definition);
            if (error != PF_Err_NONE)
                return error;
        }
    out_data->num_params = controlCount;
    setOptionsButtonName(in_data, "PB Info");
    return PF_Err_NONE;
}
