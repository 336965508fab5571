// Finds the kernels that sample their inputs at pixel centres only.
//
// At a centre, linear filtering should give the pixel unchanged, but a software driver computes the
// weights in float, so neighbouring pixels change the last bits. For these kernels the engine uses
// nearest filtering, and a copy is exact.
#pragma once

#include "support/text.h"

// True when each call in a text (a kernel's, or what computes its parameters) is `sampleNearest`,
// or samples at `outCoord()` itself. Holds at full resolution: with downsampling the middle of a
// full-size pixel lies between others.
bool readsOnlyPixelCentres(const NarrowString& shaderText);
