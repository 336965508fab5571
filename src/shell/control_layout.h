// The fixed list of 124 effect controls, and which of them a graph's images and parameters get.
//
// Projects store values by the place of a control in the list, so neither the list nor the rules by
// which parameters are laid onto it may ever change.
#pragma once

#include <array>
#include <cstdint>

#include "engine/image_node.h"
#include "engine/pb_graph.h"
#include "sdk/pf_params.h"

inline constexpr std::int32_t controlCount = 124; // index 0 is the host's own input layer

// Controls of one kind, next to each other.
struct ControlPool {
    PF_ParamType type;
    std::int32_t first;
    std::int32_t count;
    const char* name; // until a kernel gives its own

    constexpr std::int32_t end() const { return first + count; }
};

// In the order of the list.
inline constexpr std::array<ControlPool, 8> controlPools = {{
    {PF_Param_LAYER, 1, 3, "layer2"},
    {PF_Param_CHECKBOX, 4, 20, "checkbox"},
    {PF_Param_POPUP, 24, 10, "popup"},
    {PF_Param_SLIDER, 34, 10, "slider"},
    {PF_Param_FIX_SLIDER, 44, 50, "fixed"},
    {PF_Param_POINT, 94, 10, "point"},
    {PF_Param_ANGLE, 104, 10, "angle"},
    {PF_Param_COLOR, 114, 10, "color"},
}};

// How a parameter meets the user: its hint for the control goes before its type, and that before
// its plain components. None has no control.
enum class ControlForm {
    None,
    Popup,
    Angle,
    PercentSlider,
    OneChannelColor,
    Point,
    Color,
    AngleDegrees,
    Position,
    ColorRGB,
    ColorRGBA,
    Enum,
    Percentages, // a slider in percent for each component
    Ints,
    Floats,
    Bools,
};

ControlForm controlForm(const pbParameter& parameter);

// The pool's type. Not for None.
PF_ParamType controlType(ControlForm form);

// The controls that the parameter takes, next to each other: one for each component, or one alone.
std::int32_t controlsOf(const pbParameter& parameter);

// Calls work(image) for each image that has a layer control, in the images' order.
template<class Work>
void forEachLayerImage(const pbGraph& graph, Work work) {
    for (std::int32_t i = 0; i < graph.imageNodeCount(); ++i)
        if (const ImageNode& image = *graph.imageNodeAt(i); image.slot > 0)
            work(image);
}

// Calls work(parameter, k, index) for each control of each parameter that has controls: k is its
// place among those of the parameter, index that in the list.
template<class Work>
void forEachControl(const pbGraph& graph, Work work) {
    for (const auto& parameter : graph.parameters)
        for (std::int32_t k = 0; parameter->slot >= 0 && k < controlsOf(parameter->parameter); ++k)
            work(parameter->parameter, k, parameter->slot + k);
}

// Gives each image and each parameter its slot; -1 where the controls of its kind have run out.
void assignSlots(pbGraph& graph);
