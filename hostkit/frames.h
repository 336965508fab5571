// Pictures as a command gets them: a layer's pixels at the resolution of the frame, lent from the
// source itself at full resolution, a copy of their own at any other.
#pragma once

#include <map>
#include <memory>

#include "hostkit/project.h"
#include "sdk/pf_params.h"

namespace hostkit {

struct Resolution { // 1/2: half as many pixels
    A_Ratio x{1, 1};
    A_Ratio y{1, 1};
};

// Throws std::logic_error unless both factors lie above 0 and up to 1.
void requireResolution(const Resolution& resolution);

// The whole of a layer's picture; empty without a layer or a source.
PF_LRect boundsOf(const Layer* layer, const Resolution& resolution);

bool isEmpty(const PF_LRect& rect);
PF_LRect intersection(const PF_LRect& a, const PF_LRect& b); // all 0 when there is none

// Each pixel is the mean of the pixels that it covers, channel by channel.
World downsampled(const World& source, const Resolution& resolution);

// Transparent black, the rows longer than they need to be.
World makeOutput(int width, int height, int channelBytes);

// A picture out on loan. The layer must outlive it.
struct LentWorld {
    World own;            // empty where the record points at a layer's source
    PF_LayerDef record{}; // reserved0 is the Layer; null: no layer
};

PF_LayerDef recordOf(World& world);

// Without a layer or a source, a record of zeros. Throws std::logic_error when the source has
// another depth than the project.
std::unique_ptr<LentWorld> lendLayer(Layer* layer, const Resolution& resolution, int channelBytes);

// What one render has announced and taken.
struct Frame {
    Resolution resolution;
    int channelBytes = 1;
    std::map<A_long, Layer*> announced; // by checkout id
    std::map<A_long, std::unique_ptr<LentWorld>> taken;
    LentWorld output;
};

} // namespace hostkit
