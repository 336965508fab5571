// Finds the kernels that read their inputs at the middle of pixels only.
//
// Such a reading wants the pixel as it is. Linear filtering gives it too, but only as exactly as
// the driver computes the place: in float a software driver's neighbours shine through in the last
// bits. For these kernels the engine filters by the nearest pixel, and a copy is a copy to the last
// bit.
#pragma once

#include "support/text.h"

// True when each call in a text (a kernel's, or what computes its parameters) is `sampleNearest`,
// or samples at `outCoord()` itself. Holds at full resolution: with downsampling the middle of a
// full-size pixel lies between others.
bool readsOnlyPixelCentres(const NarrowString& shaderText);
