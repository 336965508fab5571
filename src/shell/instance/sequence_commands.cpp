// The sequence commands: setup, resetup, flatten, setdown.
#include <algorithm>

#include "host/interface.h"
#include "host/layer.h"
#include "host/marker.h"
#include "host/memory.h"
#include "host/stream.h"
#include "shell/commands.h"
#include "shell/instance/moved_file.h"
#include "shell/instance/sequence_data.h"
#include "support/effect_files.h"
#include "support/files.h"
#include "support/utf.h"

namespace {

// The comment of the first marker on the effect's layer; empty if there is none.
NarrowString markerComment(const PF_InData& inData) {
    SPBasicSuite* basic = inData.pica_basicP;
    AEO::Interface interface(basic, inData.effect_ref);
    AEO::Layer layer(basic, interface.layer());
    AEO::Stream markers(basic, layer.newLayerStream(AEGP_LayerStream_MARKER));
    if (markers.numKeyframes() < 1)
        return {};
    AEO::Marker marker(markers, 0);
    AEO::Memory text(basic, marker.newString(AEGP_MarkerString_COMMENT));
    const std::size_t units = text.size() / sizeof(A_UTF16Char);
    const auto* characters = static_cast<const A_UTF16Char*>(text.lock());
    if (characters == nullptr)
        return {};
    const std::u16string_view all(characters, units);
    return toNarrow(all.substr(0, all.find(u'\0')));
}

PF_Handle release(std::unique_ptr<SequenceData>& sequence) {
    return handleOf(sequence.release());
}

// Destroys the live object or the flat block in a handle of the host.
void destroySequence(const GlobalData& globalData, PF_Handle handle) {
    if (SequenceData* live = liveSequence(globalData, handle))
        delete live;
    else
        currentInData()->utils->host_dispose_handle(handle);
}

} // namespace

PF_Err SequenceSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** /*params*/,
                     PF_LayerDef* /*output*/) {
    GlobalData& globalData = globalDataOf(*in_data);
    if (out_data->sequence_data != nullptr) {
        destroySequence(globalData, out_data->sequence_data);
        out_data->sequence_data = nullptr;
    }
    auto sequence = makeObject<SequenceData>(globalData);
    const NarrowString comment = markerComment(*in_data);
    if (isMarkerPath(comment)) {
        sequence->setPath(comment);
        globalData.loadGraph(*in_data, sequence->filePath, true);
    } else {
        out_data->out_flags |= PF_OutFlag_SEND_DO_DIALOG;
    }
    out_data->sequence_data = release(sequence);
    return PF_Err_NONE;
}

PF_Err SequenceResetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** params,
                       PF_LayerDef* output) {
    if (in_data->sequence_data == nullptr)
        return SequenceSetup(in_data, out_data, params, output);
    GlobalData& globalData = globalDataOf(*in_data);
    if (liveSequence(globalData, in_data->sequence_data) != nullptr)
        return PF_Err_NONE;
    auto sequence = makeObject<SequenceData>(globalData, readFlatBlock(in_data->sequence_data));
    findMovedFile(*in_data, *sequence);
    globalData.loadGraph(*in_data, sequence->filePath, false);
    in_data->utils->host_dispose_handle(
        out_data->sequence_data != nullptr ? out_data->sequence_data : in_data->sequence_data);
    out_data->sequence_data = release(sequence);
    return PF_Err_NONE;
}

PF_Err SequenceFlatten(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** /*params*/,
                       PF_LayerDef* /*output*/) {
    const GlobalData& globalData = globalDataOf(*in_data);
    const PF_Handle handle = in_data->sequence_data;
    if (handle != nullptr) {
        const SequenceData* live = liveSequence(globalData, handle);
        out_data->sequence_data =
            writeFlatBlock(live != nullptr ? StoredSequence{live->filePath, live->defaultsPending}
                                           : readFlatBlock(handle));
        destroySequence(globalData, handle);
    } else if (out_data->sequence_data != nullptr) {
        destroySequence(globalData, out_data->sequence_data);
        out_data->sequence_data = nullptr;
    }
    return PF_Err_NONE;
}

PF_Err SequenceSetdown(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** /*params*/,
                       PF_LayerDef* /*output*/) {
    if (in_data->sequence_data != nullptr) {
        destroySequence(globalDataOf(*in_data), in_data->sequence_data);
        out_data->sequence_data = nullptr;
    }
    return PF_Err_NONE;
}
