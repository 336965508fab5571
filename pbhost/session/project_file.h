// A project file: the layer's picture, the flat block of each effect, and the values of their
// controls, as JSON that can be edited by hand:
//
//   "version": 1, "depth": 8 | 16 | 32, "time": seconds,
//   "clock": { "fps", "first": the frame at second 0 }, if there are frames,
//   "layer": { "picture": FILE } or { "width": pixels, "height": pixels },
//   "effect": { "title", "file", "data": the flat block in hexadecimal digits, "controls": [ {
//               "index", "name", "kind", "value", and "keyframes" if there are any } ] }
//
// Several effects are the list "effects", in version 2. Only visible controls are stored. The value
// of a layer control is the file of its picture. Files below the project's folder are stored
// relative to it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "pbhost/session/frame_clock.h"
#include "pbhost/session/scene.h"

namespace pbhost {

// Whether the time, in seconds, fits the 32 bits of the host's times.
constexpr bool isTime(double seconds) {
    return seconds >= 0 && seconds <= 500000;
}

struct ProjectEffect {
    std::vector<std::byte> flatBlock;
    std::string file; // relative to the project; empty: not stored
    nlohmann::ordered_json controls = nlohmann::ordered_json::array();

    std::string lastFile() const; // the file's path when the project was written
    // The pictures of its layer controls, as stored.
    std::vector<std::string> pictures() const;
};

struct ProjectFile {
    std::filesystem::path folder; // of the project
    Depth depth = Depth::Bits8;
    double seconds = 0;  // time of the last render
    std::string picture; // the layer's picture; empty: transparent, with this size
    unsigned width = 0;
    unsigned height = 0;
    std::optional<FrameClock> clock;
    std::vector<ProjectEffect> effects;

    // The path of a file that the project names; relative ones are relative to the project.
    std::string resolved(const std::string& file) const;
    // The effect's file beside the project, at its relative path or with its name; empty if there
    // is none.
    std::string besideProject(const ProjectEffect& effect) const;
};

// Throws Failure (Usage) with the file and the reason.
ProjectFile readProject(const std::string& path);

// Adds a layer with that picture.
using PictureAdder = std::function<AEGP_LayerIDVal(const std::string& picture)>;

// Sets the instance's streams to the project's values and adds the pictures of its layer controls.
// Throws Failure: Usage for unknown controls or invalid values, and what `addPicture` throws.
void fillControls(Scene& scene, const std::string& path, const ProjectFile& project,
                  const ProjectEffect& effect, const PictureAdder& addPicture);

// Flattens the instances and writes the project. Throws Failure (RenderFailed).
void writeProject(const std::string& path, const std::vector<Scene*>& stack, double seconds,
                  const std::optional<FrameClock>& clock);

} // namespace pbhost
