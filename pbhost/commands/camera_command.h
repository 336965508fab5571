// The command `camera`: shows the projection that a composition's camera gives to OpenGL.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>

namespace pbhost {

enum class CameraKind { Default, Perspective, Orthographic };

inline const std::map<std::string, CameraKind> cameraKinds = {
    {"default", CameraKind::Default},
    {"perspective", CameraKind::Perspective},
    {"orthographic", CameraKind::Orthographic},
};

struct CameraRequest {
    std::string module;   // file, for findModule; the camera is that of an instance on a layer
    unsigned width = 640; // of the composition, pixels
    unsigned height = 360;
    double pixelAspect = 1; // width of a pixel over its height
    CameraKind kind = CameraKind::Default;
    std::optional<double> zoom;                    // pixels; none: the default camera's distance
    std::optional<std::array<double, 3>> position; // none: before the middle, as far as the zoom
    std::array<double, 3> rotation{};              // degrees about x, y and z
    bool isJson = false;
};

// The matrix, for points as row vectors: as text one row a line, with six decimals, or as JSON
// {"projection": rows}. Opens a host and a context of its own. Throws Failure: Usage for an
// impossible request, RenderFailed without OpenGL.
std::string cameraProjection(const CameraRequest& request);

} // namespace pbhost
