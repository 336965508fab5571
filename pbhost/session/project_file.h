// A project on disk: the layer's picture, the effect's flat block, the values of its controls.
// JSON, to be read and mended by hand:
//
//   "version": 1, "depth": 8 | 16 | 32, "time": seconds,
//   "layer": { "picture": FILE } or { "width": pixels, "height": pixels },
//   "effect": { "title", "data": the flat block in hexadecimal digits, "controls": [ { "index",
//               "name", "kind", "value", and "keyframes" if there are any } ] }
//
// Only the controls that the effect shows are kept. A layer control's value is its picture's file.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "pbhost/session/scene.h"

namespace pbhost {

// Whether a project can stand at that time, in seconds: times must fit 32 bits.
constexpr bool isTime(double seconds) {
    return seconds >= 0 && seconds <= 500000;
}

struct ProjectFile {
    Depth depth = Depth::Bits8;
    double seconds = 0;  // where it was rendered last
    std::string picture; // of the layer; empty: it is transparent and has this size
    unsigned width = 0;
    unsigned height = 0;
    std::vector<std::byte> flatBlock;
    nlohmann::ordered_json controls = nlohmann::ordered_json::array();
};

// Throws Failure (Usage), with the file and the reason.
ProjectFile readProject(const std::string& path);

// Puts the project's values into the instance's streams; reads the pictures of its layer controls.
// Throws Failure: Usage for controls that the effect does not have or values that do not fit, and
// BadPicture.
void fillControls(Scene& scene, const std::string& path, const ProjectFile& project);

// Flattens the instance and writes all of it. Throws Failure (RenderFailed).
void writeProject(const std::string& path, Scene& scene, double seconds);

} // namespace pbhost
