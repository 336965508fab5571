// Suite for items: the sources of layers, and compositions.
#include "hostkit/calls/memory_handles.h"
#include "hostkit/calls/scene_call.h"
#include "hostkit/services/text.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getItemName(AEGP_PluginID plugin, AEGP_ItemH item, AEGP_MemHandle* utf16) {
    return serve<AEGP_ItemSuite13>("AEGP_GetItemName", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& result = call.at(utf16);
        result = newTextHandle(toUtf16(call.item(item).name));
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

} // namespace

const AEGP_ItemSuite13& itemSuite() {
    static const AEGP_ItemSuite13 table = {getItemName, getItemDimensions, getItemPixelAspectRatio};
    return table;
}

} // namespace hostkit::tables
