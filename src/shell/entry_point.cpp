// The module's one exported function. No exception leaves it.
#include <new>

#include "command/command_scope.h"
#include "sdk/record_layout.h" // checks the records at compile time
#include "shell/commands.h"
#include "shell/global_data.h"

namespace {

PF_Err dispatch(PF_Cmd command, PF_InData* inData, PF_OutData* outData, PF_ParamDef** params,
                PF_LayerDef* output, void* extra) {
    switch (command) {
    case PF_Cmd_ABOUT:
        return About(inData);
    case PF_Cmd_GLOBAL_SETUP:
        return GlobalSetup(inData, outData, params, output);
    case PF_Cmd_GLOBAL_SETDOWN:
        return GlobalSetdown(inData);
    case PF_Cmd_PARAMS_SETUP:
        return ParamsSetup(inData, outData, params, output);
    case PF_Cmd_SEQUENCE_SETUP:
        return SequenceSetup(inData, outData, params, output);
    case PF_Cmd_SEQUENCE_RESETUP:
        return SequenceResetup(inData, outData, params, output);
    case PF_Cmd_SEQUENCE_FLATTEN:
        return SequenceFlatten(inData, outData, params, output);
    case PF_Cmd_SEQUENCE_SETDOWN:
        return SequenceSetdown(inData, outData, params, output);
    case PF_Cmd_DO_DIALOG:
        return DoDialog(inData, outData, params);
    case PF_Cmd_RENDER:
        return Render(inData, outData, params, output);
    case PF_Cmd_USER_CHANGED_PARAM:
        return UserChangedParam(inData, outData, params, output, extra);
    case PF_Cmd_UPDATE_PARAMS_UI:
        return UpdateParamsUI(inData, outData, params, output);
    case PF_Cmd_SMART_PRE_RENDER:
        return SmartPreRender(inData, outData, static_cast<PF_PreRenderExtra*>(extra));
    case PF_Cmd_SMART_RENDER:
        return SmartRender(inData, outData, static_cast<PF_SmartRenderExtra*>(extra));
    default:
        return PF_Err_NONE;
    }
}

// Whether the command's handler needs the heap and the output record.
bool doesWork(PF_Cmd command) {
    switch (command) {
    case PF_Cmd_ABOUT:
    case PF_Cmd_GLOBAL_SETUP:
    case PF_Cmd_GLOBAL_SETDOWN:
    case PF_Cmd_PARAMS_SETUP:
    case PF_Cmd_SEQUENCE_SETUP:
    case PF_Cmd_SEQUENCE_RESETUP:
    case PF_Cmd_SEQUENCE_FLATTEN:
    case PF_Cmd_SEQUENCE_SETDOWN:
    case PF_Cmd_DO_DIALOG:
    case PF_Cmd_UPDATE_PARAMS_UI:
    case PF_Cmd_SMART_PRE_RENDER:
    case PF_Cmd_SMART_RENDER:
        return true;
    default:
        return false;
    }
}

// Two of these commands have no output.
bool needsOutData(PF_Cmd command) {
    return doesWork(command) && command != PF_Cmd_ABOUT && command != PF_Cmd_GLOBAL_SETDOWN;
}

} // namespace

extern "C" [[gnu::visibility("default")]] PF_Err EntryPointFunc(PF_Cmd cmd, PF_InData* in_data,
                                                                PF_OutData* out_data,
                                                                PF_ParamDef** params,
                                                                PF_LayerDef* output, void* extra) {
    try {
        if (in_data == nullptr || (out_data == nullptr && needsOutData(cmd)))
            return PF_Err_BAD_CALLBACK_PARAM;
        const GlobalData* globalData = objectIn<GlobalData>(in_data->global_data);
        const CommandScope scope(cmd, globalData != nullptr ? globalData->pluginId : 0, in_data);
        // Without a context there is no heap, which every handler needs.
        if (scope.context == nullptr && doesWork(cmd))
            return PF_Err_OUT_OF_MEMORY;
        return dispatch(cmd, in_data, out_data, params, output, extra);
    } catch (long code) {
        return static_cast<PF_Err>(code);
    } catch (const std::bad_alloc&) {
        return PF_Err_OUT_OF_MEMORY;
    } catch (...) {
        return PF_Err_INTERNAL_STRUCT_DAMAGED;
    }
}
