// The handlers of the host's commands. Each runs inside a CommandScope that has a context, and
// returns a PF_Err or throws a `long` with one, which the entry point catches.
#pragma once

#include "sdk/pf_params.h"
#include "sdk/pf_smart_render.h"

PF_Err About(PF_InData* in_data);
PF_Err GlobalSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                   PF_LayerDef* output);
PF_Err GlobalSetdown(PF_InData* in_data);
PF_Err ParamsSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                   PF_LayerDef* output);
PF_Err SequenceSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                     PF_LayerDef* output);
PF_Err SequenceResetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                       PF_LayerDef* output);
PF_Err SequenceFlatten(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                       PF_LayerDef* output);
PF_Err SequenceSetdown(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                       PF_LayerDef* output);
PF_Err DoDialog(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params);
PF_Err Render(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params, PF_LayerDef* output);
PF_Err UserChangedParam(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                        PF_LayerDef* output, void* extra);
PF_Err UpdateParamsUI(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                      PF_LayerDef* output);
PF_Err SmartPreRender(PF_InData* in_data, PF_OutData* out_data, PF_PreRenderExtra* extra);
PF_Err SmartRender(PF_InData* in_data, PF_OutData* out_data, PF_SmartRenderExtra* extra);
