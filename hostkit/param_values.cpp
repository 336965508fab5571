#include "hostkit/param_values.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace hostkit {

namespace {

constexpr double fixedOne = 65536;

double fromFixed(PF_Fixed value) {
    return value / fixedOne;
}

// Rounded to the nearest and held within the type.
template<typename Integer>
Integer toInteger(double value) {
    constexpr double low = std::numeric_limits<Integer>::min();
    constexpr double high = std::numeric_limits<Integer>::max();
    return static_cast<Integer>(std::clamp(std::round(value), low, high));
}

std::uint8_t toByte(double value) {
    return toInteger<std::uint8_t>(value * 255);
}

double factor(const A_Ratio& ratio) {
    return static_cast<double>(ratio.num) / ratio.den;
}

AEGP_ColorVal colorOf(const PF_Pixel& pixel) {
    return {pixel.alpha / 255.0, pixel.red / 255.0, pixel.green / 255.0, pixel.blue / 255.0};
}

PF_Pixel pixelOf(const AEGP_ColorVal& color) {
    return {toByte(color.alphaF), toByte(color.redF), toByte(color.greenF), toByte(color.blueF)};
}

double numberOf(const PF_ParamDef& definition) {
    switch (definition.param_type) {
    case PF_Param_SLIDER:
        return definition.u.sd.value;
    case PF_Param_FIX_SLIDER:
        return fromFixed(definition.u.fs_d.value);
    case PF_Param_ANGLE:
        return fromFixed(definition.u.ad.value);
    case PF_Param_CHECKBOX:
        return definition.u.bd.value != 0 ? 1 : 0;
    default:
        return definition.u.pd.value;
    }
}

void writeLayer(PF_LayerDef& record, const Layer* chosen, const Resolution& resolution) {
    const A_long dephault = record.dephault;
    record = {};
    record.dephault = dephault;
    if (chosen == nullptr)
        return;
    record.reserved0 = const_cast<Layer*>(chosen);
    const PF_LRect bounds = frameOf(chosen, resolution);
    record.width = bounds.right;
    record.height = bounds.bottom;
    record.pix_aspect_ratio = frameItem(*chosen).pixelAspect;
}

template<typename Control>
void dressAllButValue(Control& control, const Control& look) {
    const auto value = control.value;
    control = look;
    control.value = value;
}

void dressPoint(PF_PointDef& point, const PF_PointDef& look) {
    point.restrict_bounds = look.restrict_bounds;
    point.x_dephault = look.x_dephault;
    point.y_dephault = look.y_dephault;
}

} // namespace

AEGP_StreamType streamTypeOf(PF_ParamType kind) {
    switch (kind) {
    case PF_Param_LAYER:
        return AEGP_StreamType_LAYER_ID;
    case PF_Param_COLOR:
        return AEGP_StreamType_COLOR;
    case PF_Param_POINT:
        return AEGP_StreamType_TwoD;
    default:
        return AEGP_StreamType_OneD;
    }
}

StreamValue startValue(const PF_ParamDef& definition, const Layer& layer) {
    StreamValue start;
    const PF_PointDef& point = definition.u.td;
    switch (definition.param_type) {
    case PF_Param_LAYER:
        start.value.layer_id = definition.u.ld.dephault == 0 ? 0 : layer.id;
        break;
    case PF_Param_COLOR:
        start.value.color = colorOf(definition.u.cd.value);
        break;
    case PF_Param_POINT:
        start.value.two_d.x = fromFixed(point.x_value) / 100 * frameItem(layer).width;
        start.value.two_d.y = fromFixed(point.y_value) / 100 * frameItem(layer).height;
        break;
    default:
        start.value.one_d = numberOf(definition);
    }
    return start;
}

void writeValue(PF_ParamDef& definition, const StreamValue& value, const Layer& layer,
                const Resolution& resolution) {
    PF_ParamDefUnion& u = definition.u;
    const AEGP_StreamVal2& held = value.value;
    switch (definition.param_type) {
    case PF_Param_LAYER:
        writeLayer(u.ld, chosenLayer(value, layer), resolution);
        break;
    case PF_Param_SLIDER:
        u.sd.value = toInteger<A_long>(held.one_d);
        break;
    case PF_Param_FIX_SLIDER:
        u.fs_d.value = toFixed(held.one_d);
        break;
    case PF_Param_ANGLE:
        u.ad.value = toFixed(held.one_d);
        break;
    case PF_Param_CHECKBOX:
        u.bd.value = toInteger<A_long>(held.one_d);
        break;
    case PF_Param_COLOR:
        u.cd.value = pixelOf(held.color);
        break;
    case PF_Param_POINT:
        u.td.x_value = toFixed(held.two_d.x * factor(resolution.x));
        u.td.y_value = toFixed(held.two_d.y * factor(resolution.y));
        break;
    default:
        u.pd.value = toInteger<A_long>(held.one_d);
    }
}

Layer* chosenLayer(const StreamValue& value, const Layer& layer) {
    return value.value.layer_id == 0 ? nullptr : layer.composition->findLayer(value.value.layer_id);
}

void dress(PF_ParamDef& definition, const PF_ParamDef& look) {
    std::memcpy(definition.name, look.name, sizeof definition.name);
    definition.flags = look.flags;
    PF_ParamDefUnion& u = definition.u;
    switch (definition.param_type) {
    case PF_Param_SLIDER:
        return dressAllButValue(u.sd, look.u.sd);
    case PF_Param_FIX_SLIDER:
        return dressAllButValue(u.fs_d, look.u.fs_d);
    case PF_Param_ANGLE:
        return dressAllButValue(u.ad, look.u.ad);
    case PF_Param_CHECKBOX:
        return dressAllButValue(u.bd, look.u.bd);
    case PF_Param_COLOR:
        return dressAllButValue(u.cd, look.u.cd);
    case PF_Param_POINT:
        return dressPoint(u.td, look.u.td);
    case PF_Param_POPUP:
        return dressAllButValue(u.pd, look.u.pd);
    default:
        return; // a layer control has a name and nothing more
    }
}

std::string faultOf(const PF_ParamDef& definition) {
    const PF_PopupDef& popup = definition.u.pd;
    if (definition.param_type < PF_Param_LAYER || definition.param_type > PF_Param_POPUP)
        return "kind " + std::to_string(definition.param_type) + " is unknown";
    if (std::memchr(definition.name, 0, sizeof definition.name) == nullptr)
        return "the name does not end within its 32 bytes";
    if (definition.param_type == PF_Param_CHECKBOX && definition.u.bd.u.nameptr == nullptr)
        return "the checkbox has no text";
    if (definition.param_type != PF_Param_POPUP)
        return "";
    if (popup.num_choices < 1)
        return "the popup has no choices";
    return popup.u.namesptr == nullptr ? "the popup has no text of choices" : "";
}

bool hasNamesForChoices(const PF_PopupDef& popup) {
    const std::string_view names = popup.u.namesptr;
    // One choice more than there are names is allowed: some count from 0.
    return std::ranges::count(names, '|') + 1 >= popup.num_choices - 1;
}

const Item& frameItem(const Layer& layer) {
    if (layer.source != nullptr)
        return *layer.source;
    return *layer.composition;
}

PF_Fixed toFixed(double value) {
    return toInteger<PF_Fixed>(value * fixedOne);
}

} // namespace hostkit
