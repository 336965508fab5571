// Suite for camera layers.
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getCameraType(AEGP_LayerH camera, AEGP_CameraType* type) {
    return serve<AEGP_CameraSuite2>("AEGP_GetCameraType", [&](const SceneCall& call) {
        const Layer& found = call.layer(camera);
        if (found.type != AEGP_ObjectType_CAMERA)
            call.fail("not a camera layer");
        call.at(type) = found.cameraType;
    });
}

A_Err getDefaultCameraDistance(AEGP_CompH comp, A_FpLong* distance) {
    return serve<AEGP_CameraSuite2>(
        "AEGP_GetDefaultCameraDistanceToImagePlane", [&](const SceneCall& call) {
            call.at(distance) = call.composition(comp).defaultCameraDistance;
        });
}

} // namespace

const AEGP_CameraSuite2& cameraSuite() {
    static const AEGP_CameraSuite2 table = {getCameraType, getDefaultCameraDistance};
    return table;
}

} // namespace hostkit::tables
