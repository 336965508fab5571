// The project that a substitute host has open: compositions of layers, their streams, and the
// effects on them. A Project owns its compositions, a Composition its layers, a Layer its streams
// and effects; pointers to parents and siblings are not owning.
//
// The opaque handles of the contract are the addresses of these objects (AEGP_LayerH is a Layer*,
// AEGP_CompH a Composition*, AEGP_ItemH an Item*, AEGP_MarkerValP a Marker*, PF_ProgPtr an
// Effect*). References (AEGP_StreamRefH, AEGP_EffectRefH) are separate records, one for each
// acquisition (references.h).
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/project/streams.h"
#include "sdk/aegp_types.h"

namespace hostkit {

class Effect;      // an instance of a module on a layer (effect.h)
class UndoHistory; // undo.h
struct Composition;

// An image in the host's layout: channels alpha, red, green, blue. Rows may be padded.
struct World {
    int width = 0; // pixels
    int height = 0;
    int componentBytes = 1;      // 1, 2 (values 0 to 32768) or 4 (float)
    int rowBytes = 0;            // distance between rows, with padding
    std::vector<std::byte> data; // height times rowBytes

    int pixelBytes() const { return 4 * componentBytes; }
};

// An image of transparent black with `paddingPixels` of padding in each row.
World makeWorld(int width, int height, int componentBytes, int paddingPixels = 0);

// The base of layer sources and compositions.
struct Item {
    std::string name; // UTF-8
    int width = 0;    // pixels
    int height = 0;
    A_Ratio pixelAspect{1, 1};
};

struct Footage : Item {
    World pixels; // at full resolution
};

// A layer source of that image, with a pixel aspect ratio of 1.
std::shared_ptr<Footage> makeFootage(std::string name, World pixels);

struct Mask {
    Mask(Layer& owner, AEGP_MaskIDVal maskId, Outline path);

    LiveObject<Mask> live{this};
    AEGP_MaskIDVal id; // from 1, unique on its layer
    Stream outline{u"Mask Path", "maskShape", AEGP_StreamType_MASK};
};

struct Layer {
    Layer(Composition& owner, AEGP_LayerIDVal layerId);
    ~Layer();
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;

    // One of the layer's own streams, or null if this kind of layer does not have it: a camera has
    // no anchor point, scale, opacity and markers, and only a camera has a zoom.
    Stream* stream(AEGP_LayerStream which);

    // Adds a marker at `seconds` of the layer's time; the comment is UTF-8. Not for a camera.
    void addMarker(double seconds, const std::string& comment);

    Mask& addMask(Outline path);

    // The transform from layer space to world space at a time of the composition, including
    // parents; for a camera, from camera space (eye at the origin, looking along +z) to world
    // space. Order: anchor point, scale, rotation about z, y and x, orientation about z, y and x,
    // position, then the parent's transform. Rotations are right-handed: about z from x towards y.
    A_Matrix4 toWorld(double compSeconds) const;

    LiveObject<Layer> live{this};
    Composition* composition;
    AEGP_LayerIDVal id;  // from 1, unique in its composition
    std::u16string name; // empty: the source's name is used
    AEGP_ObjectType type = AEGP_ObjectType_AV;
    AEGP_LayerFlags flags = AEGP_LayerFlag_VIDEO_ACTIVE;
    std::shared_ptr<Footage> source; // null for a camera
    // The region with visible pixels, in pixels at full resolution, for example of a masked layer;
    // none: everything. An effect gets no pixels outside it, and its output outside it is
    // discarded.
    std::optional<PF_LRect> contents;
    Layer* parent = nullptr;
    AEGP_CameraType cameraType = AEGP_CameraType_PERSPECTIVE;
    AEGP_LightType lightType = AEGP_LightType_PARALLEL;
    double inSeconds = 0; // start of the layer in the composition
    double durationSeconds = 10;
    std::map<AEGP_LayerStream, Stream> streams;
    std::vector<std::unique_ptr<Mask>> masks;
    std::vector<std::unique_ptr<Effect>> effects; // topmost first
};

struct Composition : Item {
    // Adds a layer below the others, of its source's size, centred in the composition.
    Layer& addLayer(const std::string& layerName, std::shared_ptr<Footage> source);
    // Adds a camera that looks at the centre of the composition from a distance of its zoom, so
    // that objects at z = 0 keep their size.
    Layer& addCamera(const std::string& layerName, double zoomPixels);
    Layer* findLayer(AEGP_LayerIDVal layerId); // null if there is none
    // The topmost enabled camera whose time span contains this time, or null.
    Layer* activeCamera(double compSeconds);

    LiveObject<Composition> live{this};
    double frameRate = 25; // frames per second
    double durationSeconds = 10;
    double defaultCameraDistance = 0; // distance from the eye to the image plane in pixels
    A_Time now{0, 2500};              // current time
    std::vector<std::unique_ptr<Layer>> layers; // topmost first
};

struct Project {
    Project();
    ~Project();
    // The default camera of the new composition is a 50 mm lens on 36 mm wide film.
    Composition& addComposition(const std::string& name, int width, int height);

    int componentBytes = 1; // depth of all renders: 1, 2 or 4
    std::vector<std::unique_ptr<Composition>> compositions;
    std::unique_ptr<UndoHistory> undo;
};

} // namespace hostkit
