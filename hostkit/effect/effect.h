// One instance of a plug-in on a layer, and the commands of its life in the host's order.
//
// The host keeps the definitions of its controls, one stream for each, and the handle of its
// sequence data. An Effect belongs to its layer; the plug-in must outlive it.
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
    double seconds = 0;        // of the composition
    A_Ratio downsampleX{1, 1}; // 1/2: half as wide
    A_Ratio downsampleY{1, 1};
    std::optional<PF_LRect> region; // of the downsampled frame; none: the whole
};

struct RenderResult {
    PF_Err error = 0;
    PF_LRect resultRect{}; // what the effect announced
    PF_LRect maxResultRect{};
    World output; // transparent where nobody wrote
};

class Effect {
public:
    Effect(Plugin& owner, Layer& place);
    // Sends sequence setdown if there is sequence data; a handle that is still there then is a
    // fault.
    ~Effect();
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    // A new instance: parameter setup, sequence setup, the dialog if the effect asks for it, the
    // update of the controls. The first error ends it.
    PF_Err apply();
    // The same out of a project: parameter setup, then sequence resetup with the flat block, the
    // stored values into the streams, the update of the controls.
    PF_Err open(const std::vector<std::byte>& flatBlock,
                const std::function<void(Effect&)>& fillStreams = {});

    // Each is one command. Throws std::logic_error for those that go only to modules that ask for
    // them in global setup, by modules that did not: flattening, the dialog, the controls' update.
    PF_Err setUpParameters();
    PF_Err setUpSequence();
    PF_Err resetUpSequence();
    PF_Err flattenSequence();
    PF_Err setDownSequence();
    PF_Err doDialog(); // the options button
    PF_Err updateParamsUi();

    // Smart pre-render and, if that went well, smart render, at the project's depth. The output is
    // the part of the frame that the effect announced, as far as it was asked for. A module without
    // smart rendering gets the older command. Throws std::logic_error for impossible factors, for a
    // source of another depth, and for a depth that the module does not take. An output of an
    // earlier render, of the same size, may be given to be drawn over: it is not cleared.
    RenderResult render(const RenderRequest& request, World reusedOutput = {});

    // The older command by itself, with the whole frame as its output.
    RenderResult renderPlain(const RenderRequest& request, World reusedOutput = {});

    // The flat block: flattens, copies, and sets up again. Throws std::runtime_error, as
    // `duplicate` does, when the module refuses one of the commands.
    std::vector<std::byte> save();

    // A second instance behind this one on the same layer, with its values: what duplicating does.
    Effect& duplicate();

    // Any command on this instance, for a test.
    PF_Err send(PF_Cmd command, void* extra = nullptr);

    // A control's definition with its value at a time of the composition, as a checkout gives it.
    PF_ParamDef valueAt(std::size_t index, double compSeconds) const;

    // The same for the callbacks, at a time of the layer and at a resolution.
    PF_ParamDef valueAtLayerTime(std::size_t index, double layerSeconds,
                                 const Resolution& resolution) const;

    std::string title() const; // of the effect's group, UTF-8
    const std::string& optionsButton() const { return optionsButton_; }
    Stream& control(std::size_t index); // its stream; 0 is the input layer
    int componentBytes() const;         // of the project that it renders for

    // What the module's callbacks do, once they have checked what they were given.
    void addControl(const PF_ParamDef& definition);
    void configureControl(std::size_t index, const PF_ParamDef& look);
    void setOptionsButton(const std::string& name) { optionsButton_ = name; }
    Frame* frame() const { return frame_; } // of the render that is going on; else null

    LiveObject<Effect> live{this};
    Plugin* plugin;
    Layer* layer;
    std::vector<PF_ParamDef> definitions; // index 0 is the input layer
    std::unique_ptr<Stream> group;        // of all controls; its children in order
    PF_Handle sequenceData = nullptr;
    A_u_long outFlags = 0; // of the last sequence setup

private:
    PF_InData inDataAt(double compSeconds, const Resolution& resolution) const;
    PF_Err run(PF_Cmd command, PF_InData& inData, PF_ParamDef** params, void* extra,
               PF_LayerDef* output = nullptr);
    void takeOver(PF_Cmd command, PF_Handle asSent, const PF_OutData& outData);
    double now() const; // where the time marker stands, seconds of the composition
    class FrameInFront;
    bool wants(A_long outFlag) const; // by a flag of global setup

    std::string optionsButton_;
    Frame* frame_ = nullptr;
};

// A new instance below the others on the layer, to which no command was sent yet.
Effect& addEffect(Plugin& plugin, Layer& layer);

} // namespace hostkit
