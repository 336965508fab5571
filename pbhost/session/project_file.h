// A project file: the layer's picture, the effect's flat block, and the values of its controls, as
// JSON that can be edited by hand:
//
//   "version": 1, "depth": 8 | 16 | 32, "time": seconds,
//   "layer": { "picture": FILE } or { "width": pixels, "height": pixels },
//   "effect": { "title", "data": the flat block in hexadecimal digits, "controls": [ { "index",
//               "name", "kind", "value", and "keyframes" if there are any } ] }
//
// Only visible controls are stored. The value of a layer control is the file of its picture.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "pbhost/session/scene.h"

namespace pbhost {

// Whether the time, in seconds, fits the 32 bits of the host's times.
constexpr bool isTime(double seconds) {
    return seconds >= 0 && seconds <= 500000;
}

struct ProjectFile {
    Depth depth = Depth::Bits8;
    double seconds = 0;  // time of the last render
    std::string picture; // the layer's picture; empty: transparent, with this size
    unsigned width = 0;
    unsigned height = 0;
    std::vector<std::byte> flatBlock;
    nlohmann::ordered_json controls = nlohmann::ordered_json::array();
};

// Throws Failure (Usage) with the file and the reason.
ProjectFile readProject(const std::string& path);

// Sets the instance's streams to the project's values and reads the pictures of its layer controls.
// Throws Failure: Usage for unknown controls or invalid values, BadPicture for pictures.
void fillControls(Scene& scene, const std::string& path, const ProjectFile& project);

// Flattens the instance and writes the project. Throws Failure (RenderFailed).
void writeProject(const std::string& path, Scene& scene, double seconds);

} // namespace pbhost
