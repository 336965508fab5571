// Suite for the text of an effect's options button.
#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/command_stack.h"
#include "hostkit/effect/effect.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

PF_Err setOptionsButtonName(PF_ProgPtr effect, const char* name) {
    constexpr const char* call = "PF_SetOptionsButtonName";
    return contractCall<PF_EffectUISuite1>(call, [&] {
        ActiveCommand* command = ActiveCommand::of(effect, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (command->number != PF_Cmd_PARAMS_SETUP || name == nullptr)
            return misuse(call, "the name is null, or parameter setup is not running");
        command->effect().setOptionsButton(name);
        return PF_Err_NONE;
    });
}

} // namespace

const PF_EffectUISuite1& effectUiSuite() {
    static constexpr PF_EffectUISuite1 table = {setOptionsButtonName};
    return table;
}

} // namespace hostkit::tables
