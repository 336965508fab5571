#include "shell/frame/parameter_reading.h"

#include "engine/graph/pb_graph.h"
#include "shell/controls/control_layout.h"

namespace {

// The value of a parameter from its controls, which are adjacent.
pbValue readValue(const GraphParameter& parameter, ParamCheckout& controls,
                  const Downsampling& downsampling) {
    if (parameter.slot < 0)
        return parameter.value;
    pbValue value{};
    const ControlForm& form = *controlForm(parameter.parameter);
    for (std::int32_t k = 0; k < controlsOf(parameter.parameter); ++k)
        form.read(controls.read(parameter.slot + k).u, static_cast<std::size_t>(k), downsampling,
                  value);
    return value;
}

} // namespace

void readParameters(pbGraph& graph, ParamCheckout& controls, const Downsampling& downsampling) {
    // All are read before the first is set: instances with the same file share the graph, and the
    // host may render another instance during a checkout.
    HostVector<pbValue> values;
    values.reserve(graph.parameters.size());
    for (const auto& parameter : graph.parameters)
        values.push_back(readValue(*parameter, controls, downsampling));
    for (std::size_t i = 0; i < values.size(); ++i)
        graph.parameters[i]->value = values[i];
}
