// The callbacks that add, check out and check in the effect's parameters.
#include <algorithm>

#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/command_stack.h"
#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/effect.h"
#include "hostkit/suites/tables.h"

namespace hostkit {

namespace {

std::string controlName(A_long index) {
    return "control " + std::to_string(index);
}

PF_Err checkOutParameter(ActiveCommand& command, A_long index, double layerSeconds,
                         PF_ParamDef* param) {
    Effect& effect = command.effect();
    const Resolution resolution = {command.inData.downsample_x, command.inData.downsample_y};
    PF_ParamDef value = effect.valueAtLayerTime(index, layerSeconds, resolution);
    ParameterCheckout checkout{param, nullptr};
    if (isLayerControl(value)) {
        auto* layer = static_cast<Layer*>(value.u.ld.reserved0);
        Frame fullFrame; // outside of a render the resolution is full
        fullFrame.componentBytes = effect.componentBytes();
        const bool isInFrame = command.number == PF_Cmd_SMART_PRE_RENDER ||
                               command.number == PF_Cmd_SMART_RENDER ||
                               command.number == PF_Cmd_RENDER;
        Frame& frame = isInFrame && effect.frame() != nullptr ? *effect.frame() : fullFrame;
        checkout.pixels = checkOutLayer({layer, frameOf(layer, frame.resolution), true}, frame);
        checkout.pixels->record.dephault = value.u.ld.dephault;
        value.u.ld = checkout.pixels->record;
    }
    command.parameters.push_back(std::move(checkout));
    ledger::acquire(ledger::Kind::Parameter, param, controlName(index));
    *param = value;
    return PF_Err_NONE;
}

PF_Err checkoutParam(PF_ProgPtr effect, A_long index, A_long what_time, A_long, A_u_long time_scale,
                     PF_ParamDef* param) {
    constexpr const char* call = "checkout_param";
    return contractCall(call, [&] {
        ActiveCommand* command = ActiveCommand::of(effect, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (param == nullptr || time_scale == 0)
            return misuse(call, "the definition is null, or the time scale is 0");
        if (index < 0 || static_cast<std::size_t>(index) >= command->effect().definitions.size())
            return misuse(call, "there is no " + controlName(index));
        return checkOutParameter(*command, index, static_cast<double>(what_time) / time_scale,
                                 param);
    });
}

PF_Err checkinParam(PF_ProgPtr effect, PF_ParamDef* param) {
    constexpr const char* call = "checkin_param";
    return contractCall(call, [&] {
        ActiveCommand* command = ActiveCommand::of(effect, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        const auto checkout =
            std::ranges::find(command->parameters, param, &ParameterCheckout::record);
        if (checkout == command->parameters.end())
            return misuse(call, "the definition was not checked out by this command");
        command->parameters.erase(checkout);
        ledger::release(ledger::Kind::Parameter, param, call);
        return PF_Err_NONE;
    });
}

PF_Err addParam(PF_ProgPtr effect, A_long index, PF_ParamDef* definition) {
    constexpr const char* call = "add_param";
    return contractCall(call, [&] {
        ActiveCommand* command = ActiveCommand::of(effect, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (command->number != PF_Cmd_PARAMS_SETUP)
            return misuse(call, "not during " + commandName(command->number));
        if (index != -1 || definition == nullptr)
            return misuse(call, "the index must be -1, and the definition must not be null");
        if (const std::string fault = faultOf(*definition); !fault.empty())
            return misuse(call, fault);
        if (choiceCount(*definition) > 0 && !hasNamesForChoices(definition->u.pd))
            return misuse(call, "the popup has fewer names than choices");
        command->effect().addControl(*definition);
        return PF_Err_NONE;
    });
}

} // namespace

const PF_InteractCallbacks& tables::interactCallbacks() {
    static constexpr PF_InteractCallbacks table = {checkoutParam, checkinParam, addParam};
    return table;
}

} // namespace hostkit
