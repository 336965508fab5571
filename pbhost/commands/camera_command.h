// The command `camera`: shows the projection matrix that a composition's camera gives to OpenGL.
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
    std::string module;   // see findModule; the camera is queried through an instance on a layer
    unsigned width = 640; // of the composition, pixels
    unsigned height = 360;
    double pixelAspect = 1; // width of a pixel over its height
    CameraKind kind = CameraKind::Default;
    std::optional<double> zoom;                    // pixels; none: the default camera
    std::optional<std::array<double, 3>> position; // none: at the zoom's distance
    std::array<double, 3> rotation{};              // degrees about x, y and z
    bool isJson = false;
};

// The projection matrix for row vectors: as text with one row per line and six decimals, or as JSON
// {"projection": rows}. Creates a host and an OpenGL context. Throws Failure: Usage for an invalid
// request, RenderFailed without OpenGL.
std::string cameraProjection(const CameraRequest& request);

} // namespace pbhost
