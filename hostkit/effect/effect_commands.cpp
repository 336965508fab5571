// The commands of an instance: their inputs, and what is stored of their outputs.
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "hostkit/calls/command_stack.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/effect.h"
#include "hostkit/host.h"

namespace hostkit {

namespace {

// Units of a time: 100 in a frame, or 1001 for rates such as 24000/1001, so that the frames' times
// are whole numbers.
struct TimeScale {
    A_u_long perSecond;
    A_long perFrame;
};

TimeScale timeScaleOf(double frameRate) {
    for (const A_long perFrame : {100, 1001})
        if (const double perSecond = frameRate * perFrame;
            std::abs(perSecond - std::round(perSecond)) < 1e-6)
            return {static_cast<A_u_long>(std::lround(perSecond)), perFrame};
    return {static_cast<A_u_long>(std::lround(frameRate * 100)), 100};
}

// Commands that are sent only if the module requested them by a flag in global setup.
constexpr std::array<std::pair<PF_Cmd, A_long>, 3> requestedCommands = {{
    {PF_Cmd_SEQUENCE_FLATTEN, PF_OutFlag_SEQUENCE_DATA_NEEDS_FLATTENING},
    {PF_Cmd_DO_DIALOG, PF_OutFlag_I_DO_DIALOG},
    {PF_Cmd_UPDATE_PARAMS_UI, PF_OutFlag_SEND_UPDATE_PARAMS_UI},
}};

} // namespace

PF_Err Effect::setUpParameters() {
    definitions.resize(1);
    group->children.resize(1);
    return send(PF_Cmd_PARAMS_SETUP);
}

PF_Err Effect::setUpSequence() {
    return send(PF_Cmd_SEQUENCE_SETUP);
}

PF_Err Effect::resetUpSequence() {
    return send(PF_Cmd_SEQUENCE_RESETUP);
}

PF_Err Effect::flattenSequence() {
    return send(PF_Cmd_SEQUENCE_FLATTEN);
}

PF_Err Effect::setDownSequence() {
    return send(PF_Cmd_SEQUENCE_SETDOWN);
}

PF_Err Effect::doDialog() {
    return send(PF_Cmd_DO_DIALOG);
}

PF_Err Effect::updateParamsUi() {
    return send(PF_Cmd_UPDATE_PARAMS_UI);
}

PF_Err Effect::send(PF_Cmd command, void* extra) {
    for (const auto& [requested, flag] : requestedCommands)
        if (requested == command && !hasOutFlag(flag))
            throw std::logic_error(commandName(command) +
                                   " is sent only to modules that request it");
    // Copies, because the module may write into its parameters.
    std::vector<PF_ParamDef> copies;
    for (std::size_t i = 0; i < definitions.size(); ++i)
        copies.push_back(valueAt(i, now()));
    std::vector<PF_ParamDef*> params;
    for (PF_ParamDef& copy : copies)
        params.push_back(&copy);
    PF_InData inData = inDataAt(now(), Resolution());
    // During parameter setup there are no parameters yet.
    return run(command, inData, command == PF_Cmd_PARAMS_SETUP ? nullptr : params.data(), extra);
}

// Times are in layer time; the time step is one frame.
PF_InData Effect::inDataAt(double compSeconds, const Resolution& resolution) const {
    PF_InData inData = *Host::current().inData();
    const Item& item = frameItem(*layer);
    inData.effect_ref = reinterpret_cast<PF_ProgPtr>(const_cast<Effect*>(this));
    const TimeScale scale = timeScaleOf(layer->composition->frameRate);
    inData.time_scale = scale.perSecond;
    inData.time_step = scale.perFrame;
    inData.current_time =
        static_cast<A_long>(std::lround((compSeconds - layer->inSeconds) * inData.time_scale));
    inData.width = item.width;
    inData.height = item.height;
    inData.downsample_x = resolution.x;
    inData.downsample_y = resolution.y;
    inData.pixel_aspect_ratio = item.pixelAspect;
    return inData;
}

PF_Err Effect::run(PF_Cmd command, PF_InData& inData, PF_ParamDef** params, void* extra,
                   PF_LayerDef* output) {
    inData.sequence_data = sequenceData;
    PF_OutData outData{};
    outData.sequence_data = sequenceData;
    outData.num_params = static_cast<A_long>(definitions.size());
    const PF_Err error = plugin->call(command, inData, outData, params, output, extra);
    storeOutData(command, inData.sequence_data, outData);
    if (command == PF_Cmd_PARAMS_SETUP && error == PF_Err_NONE &&
        outData.num_params != static_cast<A_long>(definitions.size()))
        ledger::fault("PF_Cmd_PARAMS_SETUP announced " + std::to_string(outData.num_params) +
                      " parameters, but there are " + std::to_string(definitions.size()));
    return error;
}

void Effect::storeOutData(PF_Cmd command, PF_Handle asSent, const PF_OutData& outData) {
    switch (command) {
    case PF_Cmd_SEQUENCE_SETUP:
        outFlags = static_cast<A_u_long>(outData.out_flags);
        [[fallthrough]];
    case PF_Cmd_SEQUENCE_RESETUP:
    case PF_Cmd_SEQUENCE_FLATTEN:
    case PF_Cmd_SEQUENCE_SETDOWN:
        sequenceData = outData.sequence_data;
        break;
    default:
        if (outData.sequence_data != asSent)
            ledger::fault(commandName(command) + " changed the handle of the sequence data");
    }
}

double Effect::now() const {
    const A_Time& time = layer->composition->now;
    return static_cast<double>(time.value) / time.scale;
}

} // namespace hostkit
