// The scene of a session: one composition with the effect's layer, an instance of the effect on it,
// and the layers chosen in its layer controls.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "hostkit/effect/effect.h"
#include "pbhost/pictures/picture.h"
#include "pbhost/session/load_check.h"
#include "pbhost/session/session.h"

namespace pbhost {

// A picture and its file; the name is empty without a file.
struct LayerSource {
    Picture picture;
    std::string file; // absolute
};

// Throws what readPicture throws.
LayerSource readSource(const std::string& file, const ReadOptions& options);

// The picture as the source of a layer.
std::shared_ptr<hostkit::Footage> footageOf(LayerSource source);

// The path in a flat block; empty if the block is invalid.
std::string pathInBlock(const std::vector<std::byte>& block);

// Size of the effect's layer without a picture, in pixels.
inline constexpr unsigned emptyLayerWidth = 640;
inline constexpr unsigned emptyLayerHeight = 360;

// A transparent picture without a file. Throws Failure (Usage) for an invalid size.
LayerSource transparentSource(unsigned width, unsigned height, Depth depth);

class Scene {
public:
    // Sets the project's depth to that of the layer's picture.
    Scene(Session& owner, LayerSource layerSource);

    // The next effect on the same layer, whose input is the output of those above.
    explicit Scene(Scene& above);

    // Applies the effect to the layer and chooses the file in its dialog. Throws Failure
    // (BadKernel) if the effect cannot load it.
    void apply(const std::string& file);

    // Opens an instance with the flat block of a project; the controls get the kernel's defaults. A
    // file that is neither at its old path nor below the preferences' root folder is asked for in a
    // dialog, which is answered with `otherPlace` unless that is empty. `project` is the project's
    // name for messages. Throws Failure; Usage for a damaged block.
    void open(const std::string& project, const std::vector<std::byte>& flatBlock,
              const std::string& otherPlace = "");

    // Prints the findings about the loaded file and the effect's messages. Throws Failure
    // (BadKernel) for errors and, when strict, for warnings. Returns the number of the file's
    // inputs, which may exceed the effect's limit.
    std::size_t checkFile(const FindingOptions& options);

    // Adds a layer below the others and returns its id. The picture must have the project's depth.
    AEGP_LayerIDVal addLayer(LayerSource source);

    // The file of a layer's picture; empty if it has none.
    std::string fileOf(AEGP_LayerIDVal layer) const;

    // The kernel or graph; empty if it is unknown.
    const std::string& file();

    Session& session;
    hostkit::Layer& layer;
    hostkit::Effect& effect;
    std::vector<std::string> messages; // of the effect while loading

private:
    void requireGraph();

    std::string shownName_; // name of the loaded input, for messages
    std::string file_;
};

} // namespace pbhost
