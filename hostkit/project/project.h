// The project that a substitute host has open: compositions of layers, their streams, the effects
// on them. Plain objects; owners are plain too: a Project owns its compositions, a Composition its
// layers, a Layer its streams and effects. Pointers upwards and sideways are not owned.
//
// The opaque handles of the contract are the addresses of these objects (AEGP_LayerH is a Layer*,
// AEGP_CompH a Composition*, AEGP_ItemH an Item*, AEGP_MarkerValP a Marker*, PF_ProgPtr an
// Effect*); references (AEGP_StreamRefH, AEGP_EffectRefH) are records of their own,
// so that each acquisition can be told from the next.
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

class Effect;      // one instance of a module on a layer (effect.h)
class UndoHistory; // undo.h
struct Composition;

// Pixels in the host's layout: alpha, red, green, blue. Rows may be padded.
struct World {
    int width = 0; // pixels
    int height = 0;
    int componentBytes = 1;      // 1, 2 (0 to 32768) or 4 (float)
    int rowBytes = 0;            // from one row to the next
    std::vector<std::byte> data; // height times rowBytes

    int pixelBytes() const { return 4 * componentBytes; }
};

// Transparent black; the rows have `paddingPixels` more than they need.
World makeWorld(int width, int height, int componentBytes, int paddingPixels = 0);

// What a layer shows, or a composition as seen from outside.
struct Item {
    std::string name; // UTF-8
    int width = 0;    // pixels
    int height = 0;
    A_Ratio pixelAspect{1, 1};
};

struct Footage : Item {
    World pixels; // at full resolution
};

// A picture of that size, with a pixel aspect of 1.
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

    // One of the layer's own streams; null for a number that this kind of layer does not have: a
    // camera has no anchor point, scale, opacity and markers, and only it has a zoom.
    Stream* stream(AEGP_LayerStream which);

    // A marker at a time of the layer, with that comment in UTF-8. Not for a camera.
    void addMarker(double seconds, const std::string& comment);

    Mask& addMask(Outline path);

    // The layer's place in the world at a time of the composition, parents included; of a camera
    // the matrix that takes its space (the eye at 0, looking along z) to the world. A point goes
    // through the anchor point, scale, rotation about z, y and x, orientation about z, y and x,
    // position, and then the parent. Turns are right-handed: about z from x towards y.
    A_Matrix4 toWorld(double compSeconds) const;

    LiveObject<Layer> live{this};
    Composition* composition;
    AEGP_LayerIDVal id;  // from 1, unique in its composition
    std::u16string name; // empty: the source's name
    AEGP_ObjectType type = AEGP_ObjectType_AV;
    AEGP_LayerFlags flags = AEGP_LayerFlag_VIDEO_ACTIVE;
    std::shared_ptr<Footage> source; // null for a camera
    // Where it has pixels, at full resolution, as a layer behind a mask; none: everywhere. An
    // effect gets no others, and what it draws elsewhere is not seen.
    std::optional<PF_LRect> contents;
    Layer* parent = nullptr;
    AEGP_CameraType cameraType = AEGP_CameraType_PERSPECTIVE;
    AEGP_LightType lightType = AEGP_LightType_PARALLEL;
    double inSeconds = 0; // where the layer starts in the composition
    double durationSeconds = 10;
    std::map<AEGP_LayerStream, Stream> streams;
    std::vector<std::unique_ptr<Mask>> masks;
    std::vector<std::unique_ptr<Effect>> effects; // the topmost first
};

struct Composition : Item {
    // The new layer lies below the others; its size is the source's, its middle the composition's.
    Layer& addLayer(const std::string& layerName, std::shared_ptr<Footage> source);
    // Looks at the middle of the composition from as far as its zoom: what lies at z 0 keeps its
    // size.
    Layer& addCamera(const std::string& layerName, double zoomPixels);
    Layer* findLayer(AEGP_LayerIDVal layerId); // null: none
    // The topmost camera that is switched on and lasts over this time; null: none.
    Layer* activeCamera(double compSeconds);

    LiveObject<Composition> live{this};
    double frameRate = 25; // frames in a second
    double durationSeconds = 10;
    double defaultCameraDistance = 0;           // pixels from the eye to the image plane
    A_Time now{0, 2500};                        // where the time marker stands
    std::vector<std::unique_ptr<Layer>> layers; // the topmost first
};

struct Project {
    Project();
    ~Project();
    // Its default camera is that of a lens of 50 mm over a film 36 mm wide.
    Composition& addComposition(const std::string& name, int width, int height);

    int componentBytes = 1; // depth of all renders: 1, 2 or 4
    std::vector<std::unique_ptr<Composition>> compositions;
    std::unique_ptr<UndoHistory> undo;
};

} // namespace hostkit
