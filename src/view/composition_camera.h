// The view of a composition as the current OpenGL context's projection: what is then drawn in the
// composition's space (x to the right, y downward, z into the screen, in its pixels) lands where
// the host would draw it.
//
// Needs a running command and a current context with the fixed pipeline; owns nothing. Rows of the
// viewport count as the host's rows do: the composition's top is the viewport's row 0, so that what
// is read back into a buffer of the host stands upright in it.
#pragma once

#include "host/interface.h"

// Replaces the projection by the view of the camera that is active for the effect at a time of the
// composition, or by the default view when there is none. The matrix mode stays GL_PROJECTION. What
// cannot be seen through leaves the identity: a camera of unknown type, a zoom or distance of 0, a
// composition without an extent. Throws `long` 516 when the host refuses the interface's suite.
void loadCompositionCamera(const PF_InData* inData, AEGP_CompH composition,
                           AEO::Interface& interface, const A_Time& time);
