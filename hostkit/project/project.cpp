#include "hostkit/project/project.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "hostkit/effect/effect.h"
#include "hostkit/project/undo.h"
#include "hostkit/services/text.h"

namespace hostkit {

namespace {

enum class Has { Pictures, Cameras, Both };

struct LayerStreamRow {
    AEGP_LayerStream which;
    const char16_t* name;
    const char* matchName;
    AEGP_StreamType type;
    Has layers;
};

constexpr std::array<LayerStreamRow, 10> layerStreams = {{
    {AEGP_LayerStream_ANCHORPOINT, u"Anchor Point", "anchorPoint", AEGP_StreamType_ThreeD,
     Has::Pictures},
    {AEGP_LayerStream_POSITION, u"Position", "position", AEGP_StreamType_ThreeD, Has::Both},
    {AEGP_LayerStream_SCALE, u"Scale", "scale", AEGP_StreamType_ThreeD, Has::Pictures},
    {AEGP_LayerStream_ROTATION, u"Rotation", "rotation", AEGP_StreamType_OneD, Has::Both},
    {AEGP_LayerStream_OPACITY, u"Opacity", "opacity", AEGP_StreamType_OneD, Has::Pictures},
    {AEGP_LayerStream_MARKER, u"Marker", "marker", AEGP_StreamType_MARKER, Has::Pictures},
    {AEGP_LayerStream_ROTATE_X, u"X Rotation", "rotateX", AEGP_StreamType_OneD, Has::Both},
    {AEGP_LayerStream_ROTATE_Y, u"Y Rotation", "rotateY", AEGP_StreamType_OneD, Has::Both},
    {AEGP_LayerStream_ORIENTATION, u"Orientation", "orientation", AEGP_StreamType_ThreeD,
     Has::Both},
    {AEGP_LayerStream_ZOOM, u"Zoom", "zoom", AEGP_StreamType_OneD, Has::Cameras},
}};

// Creates the streams of the layer's type.
void makeStreams(Layer& layer) {
    const Has without = layer.type == AEGP_ObjectType_CAMERA ? Has::Pictures : Has::Cameras;
    layer.streams.clear();
    for (const LayerStreamRow& row : layerStreams) {
        if (row.layers == without)
            continue;
        Stream& made =
            layer.streams.try_emplace(row.which, row.name, row.matchName, row.type).first->second;
        made.layer = &layer;
    }
}

void setConstant(Layer& layer, AEGP_LayerStream which, double x, double y = 0, double z = 0) {
    layer.stream(which)->constant.value.three_d = {x, y, z};
}

using Vector = std::array<double, 3>;

// The value of the layer's stream, or `fallback` if the layer does not have it.
Vector vectorAt(const Layer& layer, AEGP_LayerStream which, double seconds,
                const Vector& fallback = {}) {
    const auto found = layer.streams.find(which);
    if (found == layer.streams.end())
        return fallback;
    const auto value = found->second.withExpression(seconds).value.three_d;
    return {value.x, value.y, value.z};
}

double numberAt(const Layer& layer, AEGP_LayerStream which, double seconds) {
    return layer.streams.at(which).withExpression(seconds).value.one_d;
}

A_Matrix4 diagonal(const Vector& scale) {
    return {{{scale[0], 0, 0, 0}, {0, scale[1], 0, 0}, {0, 0, scale[2], 0}, {0, 0, 0, 1}}};
}

A_Matrix4 percent(const Vector& scale) {
    return diagonal({scale[0] / 100, scale[1] / 100, scale[2] / 100});
}

A_Matrix4 translation(const Vector& by, double sign = 1) {
    A_Matrix4 result = diagonal({1, 1, 1});
    for (std::size_t i = 0; i < 3; ++i)
        result.mat[3][i] = sign * by[i];
    return result;
}

// Rotation about axis 0, 1 or 2, from the next axis towards the one after it.
A_Matrix4 rotation(std::size_t axis, double degrees) {
    const double angle = degrees * std::numbers::pi / 180;
    const std::size_t from = (axis + 1) % 3;
    const std::size_t to = (axis + 2) % 3;
    A_Matrix4 result = diagonal({1, 1, 1});
    result.mat[from][from] = result.mat[to][to] = std::cos(angle);
    result.mat[from][to] = std::sin(angle);
    result.mat[to][from] = -std::sin(angle);
    return result;
}

A_Matrix4 operator*(const A_Matrix4& a, const A_Matrix4& b) {
    A_Matrix4 result{};
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            for (std::size_t i = 0; i < 4; ++i)
                result.mat[row][column] += a.mat[row][i] * b.mat[i][column];
    return result;
}

Layer& addBelow(Composition& composition, const std::string& name) {
    AEGP_LayerIDVal highest = 0;
    for (const auto& each : composition.layers)
        highest = std::max(highest, each->id);
    composition.layers.push_back(std::make_unique<Layer>(composition, highest + 1));
    Layer& layer = *composition.layers.back();
    layer.name = toUtf16(name);
    layer.durationSeconds = composition.durationSeconds;
    return layer;
}

} // namespace

World makeWorld(int width, int height, int componentBytes, int paddingPixels) {
    World world;
    world.width = width;
    world.height = height;
    world.componentBytes = componentBytes;
    world.rowBytes = (width + paddingPixels) * world.pixelBytes();
    world.data.resize(static_cast<std::size_t>(world.rowBytes) * static_cast<std::size_t>(height));
    return world;
}

std::shared_ptr<Footage> makeFootage(std::string name, World pixels) {
    auto footage = std::make_shared<Footage>();
    footage->name = std::move(name);
    footage->width = pixels.width;
    footage->height = pixels.height;
    footage->pixels = std::move(pixels);
    return footage;
}

Layer::Layer(Composition& owner, AEGP_LayerIDVal layerId) : composition(&owner), id(layerId) {
    makeStreams(*this);
    setConstant(*this, AEGP_LayerStream_SCALE, 100, 100, 100);
    setConstant(*this, AEGP_LayerStream_OPACITY, 100);
}

// Effects are destroyed while the objects that their setdown may ask for still exist. Child layers
// stay, without a parent.
Layer::~Layer() {
    while (!effects.empty()) {
        const std::unique_ptr<Effect> last = std::move(effects.back());
        effects.pop_back(); // taken from the list first: setdown may still ask for the list
    }
    for (Layer* each : LiveObject<Layer>::all())
        if (each->parent == this)
            each->parent = nullptr;
}

Stream* Layer::stream(AEGP_LayerStream which) {
    const auto found = streams.find(which);
    return found == streams.end() ? nullptr : &found->second;
}

void Layer::addMarker(double seconds, const std::string& comment) {
    Stream& markers = *stream(AEGP_LayerStream_MARKER);
    StreamValue value;
    value.marker = std::make_shared<Marker>(Marker{toUtf16(comment)});
    markers.setKeyframe(markers.addKeyframe(seconds), value);
}

Mask::Mask(Layer& owner, AEGP_MaskIDVal maskId, Outline path) : id(maskId) {
    outline.layer = &owner;
    outline.constant.outline = std::make_shared<Outline>(std::move(path));
}

Mask& Layer::addMask(Outline path) {
    const AEGP_MaskIDVal highest = masks.empty() ? 0 : masks.back()->id;
    return *masks.emplace_back(std::make_unique<Mask>(*this, highest + 1, std::move(path)));
}

A_Matrix4 Layer::toWorld(double compSeconds) const {
    const double seconds = compSeconds - inSeconds;
    const Vector scale = vectorAt(*this, AEGP_LayerStream_SCALE, seconds, {100, 100, 100});
    const Vector orientation = vectorAt(*this, AEGP_LayerStream_ORIENTATION, seconds);
    const A_Matrix4 place =
        translation(vectorAt(*this, AEGP_LayerStream_ANCHORPOINT, seconds), -1) * percent(scale) *
        rotation(2, numberAt(*this, AEGP_LayerStream_ROTATION, seconds)) *
        rotation(1, numberAt(*this, AEGP_LayerStream_ROTATE_Y, seconds)) *
        rotation(0, numberAt(*this, AEGP_LayerStream_ROTATE_X, seconds)) *
        rotation(2, orientation[2]) * rotation(1, orientation[1]) * rotation(0, orientation[0]) *
        translation(vectorAt(*this, AEGP_LayerStream_POSITION, seconds));
    return parent == nullptr ? place : place * parent->toWorld(compSeconds);
}

Layer& Composition::addLayer(const std::string& layerName, std::shared_ptr<Footage> source) {
    Layer& layer = addBelow(*this, layerName);
    layer.source = std::move(source);
    if (layer.source != nullptr)
        setConstant(layer, AEGP_LayerStream_ANCHORPOINT, layer.source->width / 2.0,
                    layer.source->height / 2.0);
    setConstant(layer, AEGP_LayerStream_POSITION, width / 2.0, height / 2.0);
    return layer;
}

Layer& Composition::addCamera(const std::string& layerName, double zoomPixels) {
    Layer& layer = addBelow(*this, layerName);
    layer.type = AEGP_ObjectType_CAMERA;
    makeStreams(layer);
    setConstant(layer, AEGP_LayerStream_ZOOM, zoomPixels);
    setConstant(layer, AEGP_LayerStream_POSITION, width / 2.0, height / 2.0, -zoomPixels);
    return layer;
}

Layer* Composition::findLayer(AEGP_LayerIDVal layerId) {
    const auto found = std::find_if(layers.begin(), layers.end(),
                                    [layerId](const auto& each) { return each->id == layerId; });
    return found == layers.end() ? nullptr : found->get();
}

Layer* Composition::activeCamera(double compSeconds) {
    const auto isActive = [compSeconds](const auto& each) {
        const double seconds = compSeconds - each->inSeconds;
        return each->type == AEGP_ObjectType_CAMERA &&
               (each->flags & AEGP_LayerFlag_VIDEO_ACTIVE) != 0 && seconds > -timeTolerance &&
               seconds < each->durationSeconds - timeTolerance;
    };
    const auto found = std::find_if(layers.begin(), layers.end(), isActive);
    return found == layers.end() ? nullptr : found->get();
}

Project::Project() : undo(std::make_unique<UndoHistory>()) {}

// Setdown of an effect may still record changes, so the undo history is destroyed last.
Project::~Project() {
    compositions.clear();
}

Composition& Project::addComposition(const std::string& name, int width, int height) {
    compositions.push_back(std::make_unique<Composition>());
    Composition& composition = *compositions.back();
    composition.name = name;
    composition.width = width;
    composition.height = height;
    composition.defaultCameraDistance = width * 50.0 / 36;
    return composition;
}

} // namespace hostkit
