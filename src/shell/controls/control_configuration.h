// Configures the host's controls for a loaded graph: names, ranges, defaults, choices.
#pragma once

#include "sdk/pf_params.h"

class pbGraph;

// Writes the definitions into params and passes each to the host. Stops at the host's first error
// and returns it. The texts of choices belong to the graph and are valid as long as it is loaded.
PF_Err configureControls(const PF_InData& inData, const pbGraph& graph, PF_ParamDef** params);
