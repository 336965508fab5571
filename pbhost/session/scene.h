// What a session has open: one composition with the effect's layer, an instance of the effect on
// it, and the layers that its layer controls show.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "hostkit/effect/effect.h"
#include "pbhost/pictures/picture.h"
#include "pbhost/session/session.h"

namespace pbhost {

// A picture and the file that it came from; empty: it came from none.
struct LayerSource {
    Picture picture;
    std::string file; // absolute
};

// Throws Failure (BadPicture).
LayerSource readSource(const std::string& file, std::optional<Depth> depth);

// The layer that an effect gets without a picture, in pixels.
inline constexpr unsigned emptyLayerWidth = 640;
inline constexpr unsigned emptyLayerHeight = 360;

// Without a file: transparent. Throws Failure (Usage) for an impossible size.
LayerSource transparentSource(unsigned width, unsigned height, Depth depth);

class Scene {
public:
    // The project takes the depth of the layer's picture.
    Scene(Session& owner, LayerSource layerSource);

    // Applies the effect to the layer with that file chosen, as a user would choose it. Throws
    // Failure (BadKernel) when the effect can make no graph of it.
    void apply(const std::string& file);

    // The same out of a project. A file that is neither where it was nor under the folder of the
    // preferences is asked for. `project` is the project's name for messages. The controls have the
    // kernel's defaults then. Throws Failure, also (Usage) for a block that is damaged.
    void open(const std::string& project, const std::vector<std::byte>& flatBlock);

    // Shows what the effect said of the graph. Throws Failure (BadKernel), with the driver's log,
    // when a program of it does not compile.
    void checkPrograms();

    // Shows what is doubtful in how a graph's nodes are connected. Throws Failure (BadKernel) for
    // what is wrong, and for a caller that is strict for what is doubtful, too. How many inputs the
    // file takes, which may be more than the effect can feed.
    std::size_t checkWiring(bool isStrict);

    // A layer below the others; its id. The picture must have the project's depth.
    AEGP_LayerIDVal addLayer(LayerSource source);

    // The file of a layer's picture; empty: none.
    std::string fileOf(AEGP_LayerIDVal layer) const;

    Session& session;
    hostkit::Layer& layer;
    hostkit::Effect& effect;
    std::vector<std::string> messages; // of the loading

private:
    const std::string& file();
    void requireGraph();

    std::string shownName_; // of what was loaded
    std::string file_;      // the kernel or graph; empty: not known yet
};

} // namespace pbhost
