#include "tests/modules/recording_module.h"

#include <cstring>
#include <utility>

#include "sdk/pf_fixed.h"

namespace {

RecordingModule record;

PF_Handle newText(PF_InData* in, const char* text) {
    PF_Handle handle = in->utils->host_new_handle(std::strlen(text));
    std::memcpy(*handle, text, std::strlen(text));
    return handle;
}

void replaceSequence(PF_InData* in, PF_OutData* out, const char* text) {
    if (out->sequence_data != nullptr)
        in->utils->host_dispose_handle(out->sequence_data);
    out->sequence_data = text == nullptr ? nullptr : newText(in, text);
}

void setUpGlobally(PF_InData* in, PF_OutData* out) {
    out->my_version = recordingModuleVersion;
    out->out_flags = recordingModuleFlags;
    out->out_flags2 = recordingModuleFlags2;
    out->global_data = newText(in, "global");
}

void addControls(PF_InData* in, PF_OutData* out) {
    for (PF_ParamType kind = PF_Param_LAYER; kind <= PF_Param_POPUP; ++kind) {
        PF_ParamDef control{};
        control.param_type = kind;
        std::strcpy(control.name, "control");
        if (kind == PF_Param_CHECKBOX)
            control.u.bd.u.nameptr = "";
        if (kind == PF_Param_POINT)
            control.u.td = {50 * fixedUnits, 25 * fixedUnits, 0, 0, 0};
        if (kind == PF_Param_COLOR)
            control.u.cd.value = {255, 51, 0, 0};
        if (kind == PF_Param_POPUP) {
            control.u.pd.value = 2;
            control.u.pd.num_choices = 3;
            control.u.pd.u.namesptr = "a|b|c";
        }
        in->inter.add_param(in->effect_ref, -1, &control);
    }
    out->num_params = recordingModuleControls;
}

void announce(PF_InData* in, PF_PreRenderExtra* extra) {
    PF_CheckoutResult result{};
    PF_RenderRequest request = extra->input->output_request;
    request.preserve_rgb_of_zero_alpha = record.keepsHiddenRgb;
    extra->cb->checkout_layer(in->effect_ref, 0, 0, &request, in->current_time, in->time_step,
                              in->time_scale, &result);
    extra->output->result_rect = result.result_rect;
    extra->output->max_result_rect = result.max_result_rect;
}

// Copies the input to the output, aligned by their origins.
void copyPixels(PF_InData* in, PF_SmartRenderExtra* extra) {
    PF_EffectWorld* input = nullptr;
    PF_EffectWorld* output = nullptr;
    extra->cb->checkout_layer_pixels(in->effect_ref, 0, &input);
    extra->cb->checkout_output(in->effect_ref, &output);
    record.input = *input;
    if (!record.draws)
        return;
    const A_long pixelBytes = output->rowbytes / ((output->width + 15) / 16 * 16);
    for (A_long y = 0; y < output->height; ++y)
        std::memcpy(static_cast<char*>(output->data) + y * output->rowbytes,
                    static_cast<const char*>(input->data) +
                        (y + output->origin_y - input->origin_y) * input->rowbytes +
                        (output->origin_x - input->origin_x) * pixelBytes,
                    static_cast<std::size_t>(output->width) * static_cast<std::size_t>(pixelBytes));
}

void answer(PF_Cmd command, PF_InData* in, PF_OutData* out, void* extra) {
    switch (command) {
    case PF_Cmd_GLOBAL_SETUP:
        return setUpGlobally(in, out);
    case PF_Cmd_GLOBAL_SETDOWN:
        return in->utils->host_dispose_handle(in->global_data);
    case PF_Cmd_PARAMS_SETUP:
        return addControls(in, out);
    case PF_Cmd_SEQUENCE_SETUP:
    case PF_Cmd_SEQUENCE_RESETUP:
        return replaceSequence(in, out, "live");
    case PF_Cmd_SEQUENCE_FLATTEN:
        return replaceSequence(in, out, "flat block");
    case PF_Cmd_SEQUENCE_SETDOWN:
        return replaceSequence(in, out, nullptr);
    case PF_Cmd_SMART_PRE_RENDER:
        return announce(in, static_cast<PF_PreRenderExtra*>(extra));
    case PF_Cmd_SMART_RENDER:
        return copyPixels(in, static_cast<PF_SmartRenderExtra*>(extra));
    default:
        return;
    }
}

} // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED RecordingModule* recordingModule() {
    return &record;
}

EXPORTED PF_Err recordingEntry(PF_Cmd command, PF_InData* in, PF_OutData* out, PF_ParamDef** params,
                               PF_LayerDef* output, void* extra) {
    record.commands.push_back(command);
    answer(command, in, out, extra);
    const auto handler = record.handlers.find(command);
    if (handler != record.handlers.end())
        handler->second({in, out, params, extra, output});
    return std::exchange(record.error, 0);
}
