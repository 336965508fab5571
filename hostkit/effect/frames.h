// Layer pixels for a command: a part of a layer's image at the resolution of the frame. At full
// resolution they are the source's own pixels; otherwise each layer is downsampled once per frame.
#pragma once

#include <map>
#include <memory>

#include "hostkit/project/project.h"
#include "sdk/pf_params.h"

namespace hostkit {

struct Resolution { // 1/2: half the pixels in that direction
    A_Ratio x{1, 1};
    A_Ratio y{1, 1};
};

// Throws std::logic_error unless both factors are above 0 and at most 1.
void requireResolution(const Resolution& resolution);

// The whole area of a layer, and the area with visible pixels; empty without a layer or a source.
PF_LRect frameOf(const Layer* layer, const Resolution& resolution);
PF_LRect contentsOf(const Layer* layer, const Resolution& resolution);

// The common part of two rectangles; zeros if there is none.
PF_LRect commonPart(const PF_LRect& a, const PF_LRect& b);

// Each pixel is the mean of the source pixels that it covers, by channel.
World downsampled(const World& source, const Resolution& resolution);

// An image of transparent black with padded rows.
World makeOutput(int width, int height, int componentBytes);

// Checked-out pixels. The layer must outlive them.
struct CheckedOutWorld {
    World own;            // empty if the record points at pixels of the layer or of the frame
    PF_LayerDef record{}; // reserved0 is the Layer; null: no layer
};

PF_LayerDef recordOf(World& world);

// A request for a part of a layer.
struct LayerPart {
    Layer* layer = nullptr;       // null: no layer is chosen
    PF_LRect rect{};              // in pixels of the layer at the frame's resolution
    bool keepsHiddenRgb = false;  // false: transparent pixels become black
    World* replacement = nullptr; // pixels instead of the layer's, at the frame's resolution
};

// State of one render.
struct Frame {
    Resolution resolution;
    int componentBytes = 1;
    World* input = nullptr; // replaces the pixels of the effect's own layer; may be null
    std::map<A_long, LayerPart> announced;     // by checkout id
    std::map<const Layer*, World> downsampled; // pixels of each layer that was downsampled
    std::map<A_long, std::unique_ptr<CheckedOutWorld>> checkedOut; // by checkout id
    CheckedOutWorld output;
};

// Returns a record of zeros without a layer or a source. Throws std::logic_error if the source's
// depth differs from the frame's. The frame must outlive the result.
std::unique_ptr<CheckedOutWorld> checkOutLayer(const LayerPart& part, Frame& frame);

} // namespace hostkit
