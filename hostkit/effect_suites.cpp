// The suites of the effect's side: its controls, the format of its pictures, its button.
#include <algorithm>

#include "hostkit/call_frame.h"
#include "hostkit/command_stack.h"
#include "hostkit/effect.h"
#include "hostkit/control_kinds.h"
#include "hostkit/suite_tables.h"

namespace hostkit {

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
            return misuse(call, "no definition, or one of another kind");
        if (const std::string fault = faultOf(*definition); !fault.empty())
            return misuse(call, fault);
        command->effect().configureControl(index, *definition);
        return PF_Err_NONE;
    });
}

bool isLent(const ActiveCommand& command, const void* pixels) {
    const auto isIt = [pixels](const LentWorld& world) { return world.record.data == pixels; };
    const bool isParameter =
        std::ranges::any_of(command.parameters, [&](const ParameterLoan& loan) {
            return loan.pixels != nullptr && isIt(*loan.pixels);
        });
    if (isParameter || command.number != PF_Cmd_SMART_RENDER || command.effect().frame() == nullptr)
        return isParameter;
    const Frame& frame = *command.effect().frame();
    return isIt(frame.output) ||
           std::ranges::any_of(frame.taken, [&](const auto& taken) { return isIt(*taken.second); });
}

PF_PixelFormat formatOf(int channelBytes) {
    switch (channelBytes) {
    case 1:
        return PF_PixelFormat_ARGB32;
    case 2:
        return PF_PixelFormat_ARGB64;
    default:
        return PF_PixelFormat_ARGB128;
    }
}

PF_Err getPixelFormat(const PF_EffectWorld* world, PF_PixelFormat* format) {
    constexpr const char* call = "PF_GetPixelFormat";
    return contractCall<PF_WorldSuite2>(call, [&] {
        if (world == nullptr || format == nullptr || world->data == nullptr)
            return misuse(call, "no world, no pixels in it, or no place for the format");
        const ActiveCommand* command = ActiveCommand::newest();
        if (command == nullptr || !isLent(*command, world->data))
            return misuse(call, "the world is not lent to the running command");
        *format = formatOf(command->effect().channelBytes());
        return PF_Err_NONE;
    });
}

PF_Err setOptionsButtonName(PF_ProgPtr effect, const char* name) {
    constexpr const char* call = "PF_SetOptionsButtonName";
    return contractCall<PF_EffectUISuite1>(call, [&] {
        ActiveCommand* command = ActiveCommand::of(effect, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (command->number != PF_Cmd_PARAMS_SETUP || name == nullptr)
            return misuse(call, "no name, or not during parameter setup");
        command->effect().setOptionsButton(name);
        return PF_Err_NONE;
    });
}

} // namespace

const PF_ParamUtilsSuite1& tables::paramUtilsSuite() {
    static constexpr PF_ParamUtilsSuite1 table = {updateParamUi};
    return table;
}

const PF_WorldSuite2& tables::worldSuite() {
    static constexpr PF_WorldSuite2 table = {getPixelFormat};
    return table;
}

const PF_EffectUISuite1& tables::effectUiSuite() {
    static constexpr PF_EffectUISuite1 table = {setOptionsButtonName};
    return table;
}

} // namespace hostkit
