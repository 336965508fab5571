// Suite for the texts of markers.
#include "hostkit/calls/memory_handles.h"
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getMarkerString(AEGP_PluginID plugin, AEGP_MarkerValP marker, AEGP_MarkerStringType kind,
                      AEGP_MemHandle* utf16) {
    return serve<AEGP_MarkerSuite2>("AEGP_GetMarkerString", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& result = call.at(utf16);
        const auto found = references::find(marker, call.name);
        if (found == nullptr)
            throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
        if (kind != AEGP_MarkerString_COMMENT)
            call.fail("an unknown kind of marker text");
        result = newTextHandle(found->comment);
    });
}

} // namespace

const AEGP_MarkerSuite2& markerSuite() {
    static const AEGP_MarkerSuite2 table = {getMarkerString};
    return table;
}

} // namespace hostkit::tables
