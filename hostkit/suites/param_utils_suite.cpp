// Suite with which an effect configures its own controls.
#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/command_stack.h"
#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/effect.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

PF_Err updateParamUi(PF_ProgPtr effect, A_long index, const PF_ParamDef* definition) {
    constexpr const char* call = "PF_UpdateParamUI";
    return contractCall<PF_ParamUtilsSuite1>(call, [&] {
        ActiveCommand* command = ActiveCommand::of(effect, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (command->number != PF_Cmd_UPDATE_PARAMS_UI)
            return misuse(call, "not during " + commandName(command->number));
        const std::vector<PF_ParamDef>& all = command->effect().definitions;
        if (index < 1 || static_cast<std::size_t>(index) >= all.size())
            return misuse(call, "there is no control " + std::to_string(index));
        if (definition == nullptr || definition->param_type != all[index].param_type)
            return misuse(call, "the definition is null or of another kind");
        if (const std::string fault = faultOf(*definition); !fault.empty())
            return misuse(call, fault);
        command->effect().configureControl(index, *definition);
        return PF_Err_NONE;
    });
}

} // namespace

const PF_ParamUtilsSuite1& paramUtilsSuite() {
    static constexpr PF_ParamUtilsSuite1 table = {updateParamUi};
    return table;
}

} // namespace hostkit::tables
