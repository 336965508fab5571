// Reads the values of the effect's controls at the time of the command into a graph's parameters.
#pragma once

#include "host/param_checkout.h"
#include "shell/controls/control_forms.h"

class pbGraph;

// A parameter without a control keeps its value. Points are converted to pixels at full resolution:
// the host scales them by the frame's downsampling.
void readParameters(pbGraph& graph, ParamCheckout& controls, const Downsampling& downsampling);
