// What the effect's controls hold at the time of the command, for the parameters of a graph.
#pragma once

#include "host/param_checkout.h"
#include "shell/control_forms.h"

class pbGraph;

// Copies the controls' values into the graph's parameters. A parameter without a control keeps the
// value that it has. Points come in pixels of the full resolution: the host scales them by the
// frame's downsampling, and that is undone.
void readParameters(pbGraph& graph, ParamCheckout& controls, const Downsampling& downsampling);
