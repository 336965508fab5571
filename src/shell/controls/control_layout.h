// The fixed list of 124 effect controls, and their assignment to a graph's images and parameters.
//
// Projects store values by a control's index in the list, so neither the list nor the rules of the
// assignment may change.
#pragma once

#include <array>
#include <cstdint>

#include "engine/graph/pb_graph.h"
#include "engine/nodes/image_node.h"
#include "shell/controls/control_forms.h"

inline constexpr std::int32_t controlCount = 124;    // index 0 is the host's own input layer
inline constexpr std::int32_t layerControlCount = 3; // from index 1 on

// Adjacent controls of one type.
struct ControlPool {
    PF_ParamType type;
    std::int32_t first;
    std::int32_t count;
    const char* name;                        // shown until a kernel is loaded
    void (*define)(PF_ParamDef& definition); // sets the fields that are not zero

    constexpr std::int32_t end() const { return first + count; }
};

// In the order of the list.
extern const std::array<ControlPool, 8> controlPools;

// The number of adjacent controls for the parameter: one for each component, or one for all.
std::int32_t controlsOf(const pbParameter& parameter);

// Calls work(image) for each image that has a layer control, in the images' order.
template<class Work>
void forEachLayerImage(const pbGraph& graph, Work work) {
    for (std::int32_t i = 0; i < graph.imageNodeCount(); ++i)
        if (const ImageNode& image = *graph.imageNodeAt(i); image.slot > 0)
            work(image);
}

// Calls work(parameter, k, index) for each control of each parameter that has controls: k counts
// the controls of the parameter from 0, index is the control's index in the list.
template<class Work>
void forEachControl(const pbGraph& graph, Work work) {
    for (const auto& parameter : graph.parameters)
        for (std::int32_t k = 0; parameter->slot >= 0 && k < controlsOf(parameter->parameter); ++k)
            work(parameter->parameter, k, parameter->slot + k);
}

// Sets the slot of each image and each parameter; -1 if too few controls of its type are left.
void assignSlots(pbGraph& graph);
