// An instance of a plug-in on a layer; sends the instance's commands in the host's order.
//
// Contains the definitions of its controls, one stream for each control, and the handle of its
// sequence data. An Effect is owned by its layer; the plug-in must outlive it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/calls/live_object.h"
#include "hostkit/effect/frames.h"
#include "hostkit/module/plugin.h"
#include "hostkit/project/project.h"
#include "sdk/pf_smart_render.h"

namespace hostkit {

struct RenderRequest {
    double seconds = 0;        // composition time
    A_Ratio downsampleX{1, 1}; // 1/2: half as wide
    A_Ratio downsampleY{1, 1};
    std::optional<PF_LRect> region; // of the downsampled frame; none: the whole frame
    // Output of the effect above on the same layer, with the frame's size and resolution; replaces
    // the pixels of the layer as the effect's input. Null: the layer's source.
    World* input = nullptr;
};

struct RenderResult {
    PF_Err error = 0;
    PF_LRect resultRect{}; // as the effect announced it
    PF_LRect maxResultRect{};
    World output; // transparent where the effect wrote nothing
};

class Effect {
public:
    Effect(Plugin& owner, Layer& ownerLayer);
    // Sends sequence setdown if there is sequence data; a handle that setdown does not dispose of
    // is a fault.
    ~Effect();
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    // Initializes a new instance: parameter setup, sequence setup, the dialog if the effect
    // requests it, update of the controls. Stops at the first error.
    PF_Err apply();
    // Initializes an instance of a saved project: parameter setup, sequence resetup with the flat
    // block, `fillStreams` for the saved values, update of the controls.
    PF_Err open(const std::vector<std::byte>& flatBlock,
                const std::function<void(Effect&)>& fillStreams = {});

    // Each function sends one command. Flattening, the dialog and the update of the controls are
    // sent only if the module requested them in global setup; otherwise std::logic_error is thrown.
    PF_Err setUpParameters();
    PF_Err setUpSequence();
    PF_Err resetUpSequence();
    PF_Err flattenSequence();
    PF_Err setDownSequence();
    PF_Err doDialog(); // pressing the options button
    PF_Err updateParamsUi();

    // Sends smart pre-render and, if that succeeds, smart render, at the project's depth. The
    // output is the part of the announced rectangle that lies within the frame. A module without
    // smart rendering gets PF_Cmd_RENDER. `reusedOutput` may be the output of an earlier render of
    // the same size; it is reused without clearing. Throws std::logic_error if the downsample
    // factors are invalid, the source has another depth, or the module does not support the depth.
    RenderResult render(const RenderRequest& request, World reusedOutput = {});

    // Sends PF_Cmd_RENDER with the whole frame as its output.
    RenderResult renderPlain(const RenderRequest& request, World reusedOutput = {});

    // Returns the flat block: flattens, copies, and sets up again. Throws std::runtime_error, as
    // `duplicate` does, if the module returns an error.
    std::vector<std::byte> save();

    // Duplicates the instance: adds a copy with the same values below it on the same layer.
    Effect& duplicate();

    // Sends any command to this instance; for tests.
    PF_Err send(PF_Cmd command, void* extra = nullptr);

    // A control's definition with its value at a composition time, as for a checkout.
    PF_ParamDef valueAt(std::size_t index, double compSeconds) const;

    // The same for callbacks: at a layer time, with points scaled to the resolution.
    PF_ParamDef valueAtLayerTime(std::size_t index, double layerSeconds,
                                 const Resolution& resolution) const;

    std::string title() const; // the name of the effect's group, UTF-8
    const std::string& optionsButton() const { return optionsButton_; }
    Stream& control(std::size_t index); // the control's stream; index 0 is the input layer
    int componentBytes() const;         // depth of the project

    // Called by the module's callbacks after they checked their arguments.
    void addControl(const PF_ParamDef& definition);
    void configureControl(std::size_t index, const PF_ParamDef& look);
    void setOptionsButton(const std::string& name) { optionsButton_ = name; }
    Frame* frame() const { return frame_; } // of the render in progress; otherwise null

    LiveObject<Effect> live{this};
    Plugin* plugin;
    Layer* layer;
    std::vector<PF_ParamDef> definitions; // index 0 is the input layer
    std::unique_ptr<Stream> group;        // parent of the controls' streams, which are in order
    PF_Handle sequenceData = nullptr;
    A_u_long outFlags = 0; // returned by the last sequence setup

private:
    PF_InData inDataAt(double compSeconds, const Resolution& resolution) const;
    PF_Err run(PF_Cmd command, PF_InData& inData, PF_ParamDef** params, void* extra,
               PF_LayerDef* output = nullptr);
    void storeOutData(PF_Cmd command, PF_Handle asSent, const PF_OutData& outData);
    double now() const; // current time of the composition in seconds
    class ActiveFrame;
    bool hasOutFlag(A_long outFlag) const; // whether global setup set the flag

    std::string optionsButton_;
    Frame* frame_ = nullptr;
};

// Adds an instance below the others on the layer; no command has been sent to it.
Effect& addEffect(Plugin& plugin, Layer& layer);

} // namespace hostkit
