// Sets the projection of the current OpenGL context to the view of a composition: geometry in the
// composition's space (x to the right, y downward, z into the screen, in its pixels) is then drawn
// at the position where the host would draw it.
//
// Needs a running command and a current context with the fixed-function pipeline; owns nothing. The
// composition's top is row 0 of the viewport, as in the host's buffers, so that an image that is
// read back into one is upright.
#pragma once

#include "host/interface.h"

// Sets the projection to the view of the active camera at a time of the composition, or to the
// default view if there is none. Leaves the matrix mode at GL_PROJECTION. The projection is the
// identity if there is no valid view: for a camera of unknown type, a zoom or distance of 0, a
// composition of size 0. Throws `long` 516 if the interface suite cannot be acquired.
void loadCompositionCamera(const PF_InData* inData, AEGP_CompH composition,
                           AEO::Interface& interface, const A_Time& time);
