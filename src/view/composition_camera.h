// Sets the projection of the current OpenGL context to the view of a composition: geometry in the
// composition's space (x to the right, y downward, z into the screen, in its pixels) is then drawn
// where the host would draw it.
//
// Needs a running command and a current context with the fixed pipeline; owns nothing. The
// composition's top is row 0 of the viewport, as in the host's buffers, so that an image that is
// read back into one is upright.
#pragma once

#include "host/interface.h"

// Sets the projection to the view of the camera that is active for the effect at a time of the
// composition, or to the default view when there is none. Leaves the matrix mode GL_PROJECTION. The
// projection is the identity where there is no view: for a camera of unknown type, a zoom or
// distance of 0, a composition of size 0. Throws `long` 516 when the host refuses the interface's
// suite.
void loadCompositionCamera(const PF_InData* inData, AEGP_CompH composition,
                           AEO::Interface& interface, const A_Time& time);
