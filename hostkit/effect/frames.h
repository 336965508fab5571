// Pictures as a command gets them: a part of a layer's pixels at the resolution of the frame. At
// full resolution they are the source's own; at any other the layer is made smaller once in a
// frame.
#pragma once

#include <map>
#include <memory>

#include "hostkit/project/project.h"
#include "sdk/pf_params.h"

namespace hostkit {

struct Resolution { // 1/2: half as many pixels
    A_Ratio x{1, 1};
    A_Ratio y{1, 1};
};

// Throws std::logic_error unless both factors lie above 0 and up to 1.
void requireResolution(const Resolution& resolution);

// The whole of a layer's picture, and where it has pixels; empty without a layer or a source.
PF_LRect frameOf(const Layer* layer, const Resolution& resolution);
PF_LRect contentsOf(const Layer* layer, const Resolution& resolution);

bool isEmpty(const PF_LRect& rect);
PF_LRect intersection(const PF_LRect& a, const PF_LRect& b); // all 0 when there is none

// Each pixel is the mean of the pixels that it covers, channel by channel.
World downsampled(const World& source, const Resolution& resolution);

// Transparent black, the rows longer than they need to be.
World makeOutput(int width, int height, int componentBytes);

// A checked-out picture. The layer must outlive it.
struct CheckedOutWorld {
    World own;            // empty where the record points at pixels of the layer or of the frame
    PF_LayerDef record{}; // reserved0 is the Layer; null: no layer
};

PF_LayerDef recordOf(World& world);

// What a module asks of a layer.
struct LayerPart {
    Layer* layer = nullptr;      // null: none is chosen
    PF_LRect rect{};             // of the layer at the frame's resolution
    bool keepsHiddenRgb = false; // else the colours of transparent pixels are gone
};

// What one render has announced and taken.
struct Frame {
    Resolution resolution;
    int componentBytes = 1;
    std::map<A_long, LayerPart> announced; // by checkout id
    std::map<const Layer*, World> smaller; // layers at the resolution, if that is not the full one
    std::map<A_long, std::unique_ptr<CheckedOutWorld>> taken;
    CheckedOutWorld output;
};

// Without a layer or a source, a record of zeros. Throws std::logic_error when the source has
// another depth than the frame. The frame must outlive the result.
std::unique_ptr<CheckedOutWorld> checkOutLayer(const LayerPart& part, Frame& frame);

} // namespace hostkit
