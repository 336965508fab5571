#include "shell/control_layout.h"

namespace {

constexpr std::int32_t lastLayerControl = controlPools[0].end() - 1;

ControlForm formOfHint(pbUIControl control) {
    switch (control) {
    case pbControlPopup:
        return ControlForm::Popup;
    case pbControlAngle:
        return ControlForm::Angle;
    case pbControlPercentSlider:
        return ControlForm::PercentSlider;
    case pbControlOneChannelColor:
        return ControlForm::OneChannelColor;
    case pbControlPoint:
        return ControlForm::Point;
    case pbControlColor:
        return ControlForm::Color;
    case pbControlNone:
        break;
    }
    return ControlForm::None;
}

ControlForm formOfType(pbParameterType type) {
    switch (type) {
    case pbParameterAngleDegrees:
        return ControlForm::AngleDegrees;
    case pbParameterPosition:
        return ControlForm::Position;
    case pbParameterColorRGB:
        return ControlForm::ColorRGB;
    case pbParameterColorRGBA:
        return ControlForm::ColorRGBA;
    case pbParameterEnum:
        return ControlForm::Enum;
    default:
        return ControlForm::None;
    }
}

// Percent is a way to show numbers with a fraction; whole numbers and switches stay what they are.
ControlForm formOfComponents(const pbParameter& parameter) {
    switch (componentBase(parameter.type)) {
    case pbScalarInt:
        return ControlForm::Ints;
    case pbScalarFloat:
        return parameter.parameterType == pbParameterPercentage ? ControlForm::Percentages
                                                                : ControlForm::Floats;
    case pbScalarBool:
        return ControlForm::Bools;
    default:
        return ControlForm::None;
    }
}

bool hasOneControlForAll(ControlForm form) {
    switch (form) {
    case ControlForm::None:
    case ControlForm::Percentages:
    case ControlForm::Ints:
    case ControlForm::Floats:
    case ControlForm::Bools:
        return false;
    default:
        return true;
    }
}

// Hands out the controls of each pool from its start on.
class FreeControls {
public:
    // The first of `count` neighbours, or -1 if there are not that many left: a later and smaller
    // parameter may still fit.
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
    std::array<std::int32_t, controlPools.size()> taken_{};
};

} // namespace

ControlForm controlForm(const pbParameter& parameter) {
    if (componentCount(parameter.type) == 0)
        return ControlForm::None;
    if (const ControlForm form = formOfHint(parameter.aeUIControl); form != ControlForm::None)
        return form;
    if (const ControlForm form = formOfType(parameter.parameterType); form != ControlForm::None)
        return form;
    return formOfComponents(parameter);
}

PF_ParamType controlType(ControlForm form) {
    switch (form) {
    case ControlForm::Popup:
    case ControlForm::Enum:
        return PF_Param_POPUP;
    case ControlForm::Angle:
    case ControlForm::AngleDegrees:
        return PF_Param_ANGLE;
    case ControlForm::Point:
    case ControlForm::Position:
        return PF_Param_POINT;
    case ControlForm::Color:
    case ControlForm::ColorRGB:
    case ControlForm::ColorRGBA:
        return PF_Param_COLOR;
    case ControlForm::Ints:
        return PF_Param_SLIDER;
    case ControlForm::Bools:
        return PF_Param_CHECKBOX;
    default:
        return PF_Param_FIX_SLIDER;
    }
}

std::int32_t controlsOf(const pbParameter& parameter) {
    return hasOneControlForAll(controlForm(parameter)) ? 1 : componentCount(parameter.type);
}

void assignSlots(pbGraph& graph) {
    for (std::int32_t i = 0; i < graph.imageNodeCount(); ++i)
        graph.imageNodeAt(i)->slot = i <= lastLayerControl ? i : -1;
    FreeControls controls;
    for (const auto& parameter : graph.parameters) {
        const ControlForm form = controlForm(parameter->parameter);
        parameter->slot = form == ControlForm::None
                              ? -1
                              : controls.take(controlType(form), controlsOf(parameter->parameter));
    }
}
