#include "hostkit/calls/scene_call.h"

#include <bit>
#include <cmath>
#include <cstring>

namespace hostkit {

namespace {

// Dereferences the result of a lookup. A failed lookup has already recorded the fault.
template<class T>
T& requireFound(T* object) {
    if (object == nullptr)
        throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    return *object;
}

} // namespace

void SceneCall::fail(const std::string& why) const {
    ledger::fault(std::string(name) + ": " + why);
    throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
}

Effect& SceneCall::effect(AEGP_EffectRefH reference) const {
    return requireFound(references::find(reference, name));
}

Effect& SceneCall::effect(PF_ProgPtr instance) const {
    return known(LiveObject<Effect>::find(instance), "effect instance");
}

Layer& SceneCall::layer(AEGP_LayerH handle) const {
    return known(LiveObject<Layer>::find(handle), "layer");
}

Composition& SceneCall::composition(AEGP_CompH handle) const {
    return known(LiveObject<Composition>::find(handle), "composition");
}

Item& SceneCall::item(AEGP_ItemH handle) const {
    for (Composition* each : LiveObject<Composition>::all())
        if (handleOf(static_cast<Item*>(each)) == handle)
            return *each;
    for (Layer* each : LiveObject<Layer>::all())
        if (each->source != nullptr && handleOf(static_cast<Item*>(each->source.get())) == handle)
            return *each->source;
    fail("not a valid handle of an item");
}

Stream& SceneCall::stream(AEGP_StreamRefH reference) const {
    return requireFound(references::find(reference, name));
}

Stream& SceneCall::leaf(AEGP_StreamRefH reference) const {
    Stream& object = stream(reference);
    if (object.isGroup() || object.type == AEGP_StreamType_NO_DATA)
        fail("a stream without values");
    return object;
}

Stream& SceneCall::group(AEGP_StreamRefH reference) const {
    Stream& object = stream(reference);
    if (!object.isGroup())
        fail("a stream that is no group");
    return object;
}

StreamValue SceneCall::value(const Stream& wanted, const AEGP_StreamValue2* record) const {
    const AEGP_StreamValue2& given = at(record);
    if (&stream(given.streamH) != &wanted)
        fail("a value of another stream");
    StreamValue value;
    if (wanted.type == AEGP_StreamType_MARKER) {
        value.marker = references::find(given.val.markerP, name);
        requireFound(value.marker.get());
    } else if (wanted.type == AEGP_StreamType_MASK)
        value.outline =
            std::make_shared<Outline>(requireFound(references::find(given.val.mask, name).get()));
    else if (wanted.type == AEGP_StreamType_TEXT_DOCUMENT)
        value.document = std::make_shared<TextDocument>(
            requireFound(references::find(given.val.text_document, name).get()));
    else if (wanted.type == AEGP_StreamType_LAYER_ID)
        value.value.layer_id = given.val.layer_id;
    else
        std::memcpy(&value.value, &given.val, componentCount(wanted.type) * sizeof(A_FpLong));
    return value;
}

std::size_t SceneCall::index(A_long wanted, std::size_t count) const {
    if (wanted < 0 || static_cast<std::size_t>(wanted) >= count)
        fail("index " + std::to_string(wanted) + " of " + std::to_string(count));
    return static_cast<std::size_t>(wanted);
}

A_long SceneCall::withFlag(A_long flags, A_long oneFlag, bool isSet) const {
    if (!std::has_single_bit(static_cast<A_u_long>(oneFlag)))
        fail("not one flag");
    return isSet ? flags | oneFlag : flags & ~oneFlag;
}

double SceneCall::seconds(const A_Time* time) const {
    const A_Time& given = at(time);
    if (given.scale == 0)
        fail("a time of scale 0");
    return static_cast<double>(given.value) / given.scale;
}

double SceneCall::layerSeconds(const Layer* layer, AEGP_LTimeMode mode, const A_Time* time) const {
    return seconds(time) - start(layer, mode);
}

A_Time SceneCall::time(const Layer* layer, AEGP_LTimeMode mode, double layerSeconds) const {
    const double seconds = layerSeconds + start(layer, mode);
    return {static_cast<A_long>(std::lround(seconds * timeUnits)), timeUnits};
}

// Start of the layer in the time base `mode`, in seconds.
double SceneCall::start(const Layer* layer, AEGP_LTimeMode mode) const {
    if (mode != AEGP_LTimeMode_LayerTime && mode != AEGP_LTimeMode_CompTime)
        fail("an unknown time mode");
    return mode == AEGP_LTimeMode_CompTime && layer != nullptr ? layer->inSeconds : 0;
}

} // namespace hostkit
