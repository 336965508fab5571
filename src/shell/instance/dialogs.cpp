// The commands that show dialogs or follow an action of the user: options button, about box, a
// changed control.
#include <algorithm>

#include "host/host_services.h"
#include "host/script_bridge.h"
#include "shell/commands.h"
#include "shell/instance/error_log_export.h"
#include "shell/instance/sequence_data.h"
#include "support/outcome_texts.h"
#include "support/utf.h"

namespace {

constexpr std::size_t longestInformation = 255; // bytes

NarrowString promptFor(const SequenceData& sequence) {
    if (sequence.filePath.empty())
        return NarrowString("Select Pixel Bender file");
    const std::size_t separator = sequence.filePath.find_last_of("/\\");
    NarrowString prompt("Where is ");
    if (separator != NarrowString::npos)
        prompt.append(sequence.filePath.substr(separator));
    return prompt.append("?");
}

// Gives every instance with the old path the new one.
void replacePath(const GlobalData& globalData, const NarrowString& oldPath,
                 const NarrowString& newPath) {
    for (const PF_Handle handle : globalData.liveSequences) {
        auto* sequence = objectIn<SequenceData>(handle);
        if (sequence->filePath != oldPath)
            continue;
        sequence->setPath(newPath);
        sequence->controlsBuilt = false;
    }
}

void showInformation(const PF_InData& inData, const pbGraph& graph) {
    const NarrowString text(utf8Prefix(graph.infoText, longestInformation));
    alertBox(inData.pica_basicP, text.c_str(), informationTitle, false);
}

// Gives the new file to the instance and to all others with the same missing file.
void setFile(const GlobalData& globalData, SequenceData& sequence, const NarrowString& path) {
    const NarrowString oldPath = sequence.filePath;
    sequence.setPath(path);
    if (oldPath.empty())
        sequence.defaultsPending = true;
    else
        replacePath(globalData, oldPath, path);
    sequence.controlsBuilt = false;
}

// Whether the user chose a file that could be loaded. The instance may be destroyed during the
// dialog, because the host can send further commands meanwhile.
bool askForFile(const PF_InData& inData, GlobalData& globalData, PF_Handle handle,
                const SequenceData& asking) {
    NarrowString path;
    if (!openFileDialog(inData.pica_basicP, promptFor(asking).c_str(), "pbk or pbg:*.pbk;*.pbg;",
                        path) ||
        !globalData.loadGraph(inData, path, true))
        return false;
    if (SequenceData* sequence = liveSequence(globalData, handle))
        setFile(globalData, *sequence, path);
    return true;
}

NarrowString labelled(const char* label, const char* text) {
    return concatenate(NarrowString(label), text != nullptr ? text : "");
}

} // namespace

PF_Err DoDialog(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** /*params*/) {
    GlobalData& globalData = globalDataOf(*in_data);
    const SequenceData* sequence = liveSequence(globalData, out_data->sequence_data);
    if (sequence == nullptr)
        return PF_Err_NONE;
    const pbGraph* graph = globalData.findGraph(sequence->filePath);
    if (graph != nullptr && isRunnable(*graph))
        showInformation(*in_data, *graph);
    else if (askForFile(*in_data, globalData, out_data->sequence_data, *sequence))
        return PF_Err_NONE;
    offerErrorLog(*in_data);
    return PF_Err_NONE;
}

PF_Err About(PF_InData* in_data) {
    const GlobalData& globalData = globalDataOf(*in_data);
    infoPanel3(in_data->pica_basicP, labelled("OpenGL vendor  : ", globalData.glVendor).c_str(),
               labelled("OpenGL version : ", globalData.glVersion).c_str(),
               labelled("GLSL   version : ", globalData.glslVersion).c_str());
    offerErrorLog(*in_data);
    return PF_Err_NONE;
}

PF_Err UserChangedParam(PF_InData* /*in_data*/, PF_OutData* /*out_data*/, PF_ParamDef** /*params*/,
                        PF_LayerDef* /*output*/, void* /*extra*/) {
    return PF_Err_NONE;
}
