// The small suites of the scene: markers, cameras, items, compositions.
#include "hostkit/memory_handles.h"
#include "hostkit/scene_call.h"
#include "hostkit/suite_tables.h"
#include "hostkit/text.h"

namespace hostkit::tables {

namespace {

A_Err getMarkerString(AEGP_PluginID plugin, AEGP_MarkerValP marker, AEGP_MarkerStringType kind,
                      AEGP_MemHandle* utf16) {
    return serve<AEGP_MarkerSuite2>("AEGP_GetMarkerString", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& lent = call.at(utf16);
        const auto found = references::find(marker, call.name);
        if (found == nullptr)
            throw Refusal{PF_Err_BAD_CALLBACK_PARAM};
        if (kind != AEGP_MarkerString_COMMENT)
            call.refuse("a text that markers do not have");
        lent = lendText(found->comment);
    });
}

A_Err getCameraType(AEGP_LayerH camera, AEGP_CameraType* type) {
    return serve<AEGP_CameraSuite2>("AEGP_GetCameraType", [&](const SceneCall& call) {
        const Layer& found = call.layer(camera);
        if (found.type != AEGP_ObjectType_CAMERA)
            call.refuse("a layer that is no camera");
        call.at(type) = found.cameraType;
    });
}

A_Err getDefaultCameraDistance(AEGP_CompH comp, A_FpLong* distance) {
    return serve<AEGP_CameraSuite2>(
        "AEGP_GetDefaultCameraDistanceToImagePlane", [&](const SceneCall& call) {
            call.at(distance) = call.composition(comp).defaultCameraDistance;
        });
}

A_Err getItemName(AEGP_PluginID plugin, AEGP_ItemH item, AEGP_MemHandle* utf16) {
    return serve<AEGP_ItemSuite13>("AEGP_GetItemName", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& lent = call.at(utf16);
        lent = lendText(toUtf16(call.item(item).name));
    });
}

A_Err getItemDimensions(AEGP_ItemH item, A_long* width, A_long* height) {
    return serve<AEGP_ItemSuite13>("AEGP_GetItemDimensions", [&](const SceneCall& call) {
        const Item& found = call.item(item);
        call.at(width) = found.width;
        call.at(height) = found.height;
    });
}

A_Err getItemPixelAspectRatio(AEGP_ItemH item, A_Ratio* ratio) {
    return serve<AEGP_ItemSuite13>("AEGP_GetItemPixelAspectRatio", [&](const SceneCall& call) {
        call.at(ratio) = call.item(item).pixelAspect;
    });
}

A_Err getItemFromComp(AEGP_CompH comp, AEGP_ItemH* item) {
    return serve<AEGP_CompSuite11>("AEGP_GetItemFromComp", [&](const SceneCall& call) {
        call.at(item) = handleOf(static_cast<Item*>(&call.composition(comp)));
    });
}

A_Err getCompFramerate(AEGP_CompH comp, A_FpLong* framesPerSecond) {
    return serve<AEGP_CompSuite11>("AEGP_GetCompFramerate", [&](const SceneCall& call) {
        call.at(framesPerSecond) = call.composition(comp).frameRate;
    });
}

A_Err setCompFramerate(AEGP_CompH comp, const A_FpLong* framesPerSecond) {
    return serve<AEGP_CompSuite11>("AEGP_SetCompFramerate", [&](const SceneCall& call) {
        Composition& found = call.composition(comp);
        const A_FpLong wanted = call.at(framesPerSecond);
        if (!(wanted > 0))
            call.refuse("a frame rate that is not above 0");
        found.frameRate = wanted;
    });
}

} // namespace

const AEGP_MarkerSuite2& markerSuite() {
    static const AEGP_MarkerSuite2 table = {getMarkerString};
    return table;
}

const AEGP_CameraSuite2& cameraSuite() {
    static const AEGP_CameraSuite2 table = {getCameraType, getDefaultCameraDistance};
    return table;
}

const AEGP_ItemSuite13& itemSuite() {
    static const AEGP_ItemSuite13 table = {getItemName, getItemDimensions, getItemPixelAspectRatio};
    return table;
}

const AEGP_CompSuite11& compSuite() {
    static const AEGP_CompSuite11 table = {getItemFromComp, getCompFramerate, setCompFramerate};
    return table;
}

} // namespace hostkit::tables
