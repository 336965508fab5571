// The command that adapts the effect's controls to its kernel: title, definitions, visibility and,
// once, the kernel's defaults. The host sends it often; two flags of the instance record what is
// done.
#include <bitset>

#include "host/effect.h"
#include "host/host_services.h"
#include "host/interface.h"
#include "host/stream.h"
#include "shell/commands.h"
#include "shell/controls/control_configuration.h"
#include "shell/controls/control_layout.h"
#include "shell/instance/sequence_data.h"
#include "support/outcome_texts.h"
#include "support/utf.h"

namespace {

using ControlSet = std::bitset<controlCount>;

// Groups changes into one step of the host's undo history, for the lifetime of this object.
class UndoGroup {
public:
    explicit UndoGroup(SPBasicSuite* basic)
        : basic_(basic), isOpen_(startUndoGroup(basic, "") == PF_Err_NONE) {}
    ~UndoGroup() {
        if (isOpen_)
            endUndoGroup(basic_);
    }
    UndoGroup(const UndoGroup&) = delete;
    UndoGroup& operator=(const UndoGroup&) = delete;

private:
    SPBasicSuite* basic_;
    bool isOpen_;
};

// The running effect with its streams in the host's scene.
class OwnEffect {
public:
    explicit OwnEffect(const PF_InData& inData)
        : basic_(inData.pica_basicP), interface_(basic_, inData.effect_ref),
          effect_(basic_, interface_.newEffect()) {}

    AEO::Stream control(std::int32_t index) {
        return AEO::Stream(basic_, effect_.newParamStream(index));
    }

private:
    SPBasicSuite* basic_;
    AEO::Interface interface_;
    AEO::Effect effect_;
};

// The parent of the controls is the effect's group, whose name is the title.
void retitle(const PF_InData& inData, const char* name) {
    const UndoGroup group(inData.pica_basicP);
    OwnEffect effect(inData);
    AEO::Stream control = effect.control(1);
    AEO::Stream parent(inData.pica_basicP, control.newParent());
    parent.setName(toWide(concatenate(NarrowString(titlePrefix), name)).c_str());
}

ControlSet usedControls(const pbGraph& graph) {
    ControlSet used;
    const auto use = [&](std::int32_t index) { used.set(static_cast<std::size_t>(index)); };
    forEachLayerImage(graph, [&](const ImageNode& image) { use(image.slot); });
    forEachControl(graph,
                   [&](const pbParameter&, std::int32_t, std::int32_t index) { use(index); });
    return used;
}

void showOnly(const PF_InData& inData, const ControlSet& used) {
    const UndoGroup group(inData.pica_basicP);
    OwnEffect effect(inData);
    for (std::int32_t index = 1; index < controlCount; ++index)
        effect.control(index).setDynamicFlag(AEGP_DynStreamFlag_HIDDEN, true,
                                             !used.test(static_cast<std::size_t>(index)));
}

void writeDefaults(const PF_InData& inData, const pbGraph& graph) {
    const UndoGroup group(inData.pica_basicP);
    OwnEffect effect(inData);
    forEachControl(graph, [&](const pbParameter& parameter, std::int32_t k, std::int32_t index) {
        const ControlSource source{inData, parameter, static_cast<std::size_t>(k)};
        effect.control(index).setValue(controlForm(parameter)->defaultValue(source));
    });
}

PF_Err buildControls(const PF_InData& inData, const pbGraph* graph, PF_ParamDef** params) {
    retitle(inData, graph != nullptr ? graph->name.c_str() : titleWithoutGraph);
    if (graph == nullptr) {
        showOnly(inData, {});
        return PF_Err_NONE;
    }
    const PF_Err error = configureControls(inData, *graph, params);
    if (error == PF_Err_NONE)
        showOnly(inData, usedControls(*graph));
    return error;
}

} // namespace

PF_Err UpdateParamsUI(PF_InData* in_data, PF_OutData* /*out_data*/, PF_ParamDef** params,
                      PF_LayerDef* /*output*/) {
    const GlobalData& globalData = globalDataOf(*in_data);
    SequenceData* sequence = liveSequence(globalData, in_data->sequence_data);
    if (sequence == nullptr)
        return PF_Err_NONE;
    const pbGraph* graph = globalData.findGraph(sequence->filePath);
    PF_Err error = PF_Err_NONE;
    if (!sequence->controlsBuilt) {
        if (graph != nullptr && params == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        error = buildControls(*in_data, graph, params);
        sequence->controlsBuilt = true;
    }
    if (sequence->defaultsPending && graph != nullptr) {
        writeDefaults(*in_data, *graph);
        sequence->defaultsPending = false;
    }
    return error;
}
