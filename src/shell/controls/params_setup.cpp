// Declares the fixed list of controls to the host.
#include <algorithm>
#include <string_view>

#include "host/host_services.h"
#include "shell/commands.h"
#include "shell/controls/control_layout.h"

namespace {

PF_ParamDef declare(const ControlPool& pool, std::int32_t index) {
    PF_ParamDef definition{};
    definition.uu.id = index;
    definition.param_type = pool.type;
    const std::string_view name = pool.name;
    std::copy(name.begin(), name.end(), definition.name);
    pool.define(definition);
    return definition;
}

} // namespace

PF_Err ParamsSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** /*params*/,
                   PF_LayerDef* /*output*/) {
    for (const ControlPool& pool : controlPools)
        for (std::int32_t index = pool.first; index < pool.end(); ++index) {
            PF_ParamDef definition = declare(pool, index);
            const PF_Err error = in_data->inter.add_param(in_data->effect_ref, -1, &definition);
            if (error != PF_Err_NONE)
                return error;
        }
    out_data->num_params = controlCount;
    setOptionsButtonName(in_data, "PB Info");
    return PF_Err_NONE;
}
