// Suite for light layers.
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getLightType(AEGP_LayerH light, AEGP_LightType* type) {
    return serve<AEGP_LightSuite2>("AEGP_GetLightType", [&](const SceneCall& call) {
        const Layer& found = call.layer(light);
        if (found.type != AEGP_ObjectType_LIGHT)
            call.fail("not a light layer");
        call.at(type) = found.lightType;
    });
}

} // namespace

const AEGP_LightSuite2& lightSuite() {
    static const AEGP_LightSuite2 table = {getLightType};
    return table;
}

} // namespace hostkit::tables
