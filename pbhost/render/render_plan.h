// A render request, parsed and with its project read; made before anything is loaded.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "pbhost/render/effect_target.h"
#include "pbhost/render/render_request.h"
#include "pbhost/session/project_file.h"

namespace pbhost {

struct Key {
    TargetedSetting target;
    long frame = 0;
    bool isHeld = false;
};

struct RenderPlan {
    // Throws Failure (Usage). The request must outlive the plan.
    explicit RenderPlan(const RenderRequest& asked);

    std::optional<Depth> depth() const; // nothing: that of the first picture
    // The layer's picture, if there is one, and those of the layer controls; patterns where they
    // change with the frame.
    std::vector<std::string> pictures() const;
    // The size of a layer without a picture.
    std::pair<unsigned, unsigned> emptySize() const;

    // The options for reading and writing. `first` is the header of the layer's picture, or null.
    ReadOptions layerOptions() const;
    ReadOptions otherOptions(const std::shared_ptr<const PictureHeader>& first, Depth depth) const;
    WriteOptions outputOptions(const PictureHeader* first) const;

    const RenderRequest& request;
    ProjectFile project; // of the request; without one, it has no effects
    std::string picture; // of the layer; a pattern, or empty
    EffectNames names;   // of the effects
    std::vector<TargetedSetting> settings;
    std::vector<TargetedSetting> layers;    // with the pictures as values
    std::vector<std::string> extraPictures; // for the next free layer controls
    std::vector<Key> keys;
    double seconds = 0; // of a single frame
    std::pair<unsigned, unsigned> downsample;
    FrameClock clock;
    bool isSequence = false; // the clock's rate is that of the composition

private:
    void parseSettings();
    void parseClock();
    std::optional<Alpha> wantedAlpha() const; // as --alpha says
};

} // namespace pbhost
