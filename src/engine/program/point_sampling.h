// Finds kernels that sample their inputs only at pixel centres.
//
// At a centre, linear filtering should return the pixel unchanged, but a software driver computes
// the weights in float, so neighbouring pixels change the last bits. For these kernels the engine
// uses nearest filtering, and a copy is exact.
#pragma once

#include "support/text.h"

// True if every sampling call in a text (of a kernel, or of parameter expressions) is
// `sampleNearest`, or samples at `outCoord()` itself. Valid at full resolution: with downsampling
// the centre of a full-size pixel lies between pixels of the frame.
bool readsOnlyPixelCentres(const NarrowString& shaderText);
