// Configures the host's controls for a loaded graph: names, ranges, defaults, choices.
#pragma once

#include "sdk/pf_params.h"

class pbGraph;

// Writes the definitions into params and hands each to the host. The first error of the host ends
// the handing out and is the result. The texts of choices that the definitions then point at are
// the graph's: they stay as long as it is loaded.
PF_Err configureControls(const PF_InData& inData, const pbGraph& graph, PF_ParamDef** params);
