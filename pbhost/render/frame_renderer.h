// A stack of effects in a session of the module, and the rendering of frames into memory. All calls
// come from the thread of the session.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pbhost/pictures/picture.h"
#include "pbhost/render/render_plan.h"
#include "pbhost/session/scene.h"
#include "pbhost/session/session.h"

namespace pbhost {

// Reads the picture of a layer control for the first frame. `options` are those for the layer.
using OtherReader = std::function<LayerSource(const std::string& picture, const ReadOptions&)>;

class FrameRenderer {
public:
    // Loads the effects of the plan with the layer's first picture, and sets the controls. Throws
    // Failure. Notes go to standard error. The plan must outlive the renderer.
    FrameRenderer(Session& owner, const RenderPlan& asked, LayerSource first,
                  const OtherReader& readOther);

    // Replaces the picture of the effects' layer. It must have the depth of the first.
    void setLayer(LayerSource source);

    // The pictures of the layer controls, as the plan names them, and their replacement.
    const std::vector<std::string>& others() const { return others_; }
    void setOther(std::size_t index, LayerSource source);

    // Renders the stack at a second of the composition. The result has the header of the layer's
    // picture. Throws Failure (RenderFailed) if OpenGL fails or an effect does not write its
    // output.
    Picture render(double seconds);

    // Every control's value at that time, as text; frames with equal texts and pictures are equal.
    std::string valuesAt(double seconds);
    // The files of the effects.
    std::vector<std::string> effectFiles();
    std::string driverName(); // of OpenGL

    Depth depth() const { return depth_; }
    // Checks that --save names a file that may be overwritten. Throws Failure (Usage).
    void checkSave();
    void save(const std::optional<FrameClock>& clock);

private:
    void load();
    void checkInputs(const std::vector<std::size_t>& inputs);
    void setPictures();
    void setPicture(const char* option, const TargetedSetting& setting);
    void setValues();
    void requireTextureSize(const hostkit::Layer& layer) const;
    AEGP_LayerIDVal addPicture(const std::string& picture);
    std::vector<hostkit::Effect*> effects() const;
    hostkit::World renderEffect(Scene& scene, double seconds, hostkit::World* input);

    Session& session_;
    const RenderPlan& plan_;
    Depth depth_;
    std::shared_ptr<const PictureHeader> header_; // of the layer's picture; may be null
    const OtherReader& readOther_;
    std::vector<std::unique_ptr<Scene>> stack_; // in the order of rendering
    std::vector<std::string> others_;
    std::vector<AEGP_LayerIDVal> otherLayers_;
};

} // namespace pbhost
