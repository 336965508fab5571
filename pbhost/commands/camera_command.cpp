#include "pbhost/commands/camera_command.h"

#include <GL/gl.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>

#include "command/command_scope.h"
#include "gpu/device.h"
#include "hostkit/effect/effect.h"
#include "hostkit/host.h"
#include "hostkit/module/plugin.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/places.h"
#include "view/composition_camera.h"

namespace pbhost {

namespace {

using Rows = std::array<std::array<double, 4>, 4>;

// Denominator of the pixel aspect ratio in the host's records.
constexpr A_u_long aspectUnits = 1000000;

void requireContext(const Device& device) {
    if (device.glRenderContext == nullptr)
        throw Failure(ExitCode::RenderFailed,
                      "OpenGL is not available: no context can be created (a "
                      "software driver for EGL is enough)");
}

bool areFinite(const std::array<double, 3>& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double x) { return std::isfinite(x); });
}

void check(const CameraRequest& request) {
    constexpr unsigned most = std::numeric_limits<A_long>::max();
    if (request.width == 0 || request.height == 0 || request.width > most || request.height > most)
        throw Failure(ExitCode::Usage, "a composition is at least 1 pixel wide and high");
    if (!(request.pixelAspect >= 1e-3 && request.pixelAspect <= 1e3))
        throw Failure(ExitCode::Usage, "a pixel aspect must be between 0.001 and 1000");
    if (request.zoom && !(std::isfinite(*request.zoom) && *request.zoom > 0))
        throw Failure(ExitCode::Usage, "--zoom: the zoom must be a number above 0");
    if ((request.position && !areFinite(*request.position)) || !areFinite(request.rotation))
        throw Failure(ExitCode::Usage, "--position and --rotation require finite numbers");
}

void setNumbers(hostkit::Layer& layer, AEGP_LayerStream which, double x, double y = 0,
                double z = 0) {
    layer.stream(which)->constant.value.three_d = {x, y, z};
}

void addCamera(hostkit::Composition& composition, const CameraRequest& request) {
    const double zoom = request.zoom.value_or(composition.defaultCameraDistance);
    hostkit::Layer& camera = composition.addCamera("camera", zoom);
    if (request.kind == CameraKind::Orthographic)
        camera.cameraType = AEGP_CameraType_ORTHOGRAPHIC;
    if (request.position) {
        const auto& [x, y, z] = *request.position;
        setNumbers(camera, AEGP_LayerStream_POSITION, x, y, z);
    }
    setNumbers(camera, AEGP_LayerStream_ROTATE_X, request.rotation[0]);
    setNumbers(camera, AEGP_LayerStream_ROTATE_Y, request.rotation[1]);
    setNumbers(camera, AEGP_LayerStream_ROTATION, request.rotation[2]);
}

hostkit::Composition& addComposition(hostkit::Project& project, const CameraRequest& request) {
    hostkit::Composition& composition = project.addComposition(
        "pbhost", static_cast<int>(request.width), static_cast<int>(request.height));
    composition.pixelAspect = {static_cast<A_long>(std::lround(request.pixelAspect * aspectUnits)),
                               aspectUnits};
    if (request.kind != CameraKind::Default)
        addCamera(composition, request);
    else if (request.zoom)
        composition.defaultCameraDistance = *request.zoom;
    return composition;
}

// OpenGL returns columns of the matrix for column vectors, which are the rows for row vectors.
Rows currentProjection() {
    std::array<double, 16> entries{};
    glGetDoublev(GL_PROJECTION_MATRIX, entries.data());
    Rows rows{};
    for (std::size_t i = 0; i < entries.size(); ++i)
        rows[i / 4][i % 4] = entries[i] + 0.0; // converts -0 to 0
    return rows;
}

Rows projectionOf(const CameraRequest& request) {
    hostkit::Host host;
    hostkit::Composition& composition = addComposition(host.project, request);
    hostkit::Layer& layer = composition.addLayer("layer", nullptr);
    // No command is sent to the instance; the camera query only needs it.
    hostkit::Plugin plugin(findModule(request.module));
    hostkit::Effect& effect = hostkit::addEffect(plugin, layer);
    const OwnDevice device("pbhost");
    requireContext(device);
    const ContextSwitch inContext(device);
    host.registeredPlugins.emplace_back("pbhost");
    const CommandScope command(PF_Cmd_RENDER, 1, host.inData());
    AEO::Interface interface(host.inData()->pica_basicP, reinterpret_cast<PF_ProgPtr>(&effect));
    loadCompositionCamera(host.inData(), reinterpret_cast<AEGP_CompH>(&composition), interface,
                          composition.now);
    return currentProjection();
}

// With '.' as the decimal point in every locale.
std::string decimal(double number) {
    std::array<char, 512> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, 6);
    const std::string digits(text.data(), end);
    return digits == "-0.000000" ? "0.000000" : digits;
}

} // namespace

std::string cameraProjection(const CameraRequest& request) {
    check(request);
    const Rows rows = projectionOf(request);
    if (request.isJson)
        return nlohmann::json{{"projection", rows}}.dump(2) + "\n";
    std::string text;
    for (const auto& row : rows)
        for (std::size_t column = 0; column < row.size(); ++column)
            text += decimal(row[column]) + (column + 1 < row.size() ? " " : "\n");
    return text;
}

} // namespace pbhost
