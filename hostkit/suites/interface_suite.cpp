// Suite that finds the layer of the instance that received the command, and converts its time.
#include <cmath>

#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getEffectLayer(PF_ProgPtr effect, AEGP_LayerH* layer) {
    return serve<AEGP_PFInterfaceSuite1>("AEGP_GetEffectLayer", [&](const SceneCall& call) {
        call.at(layer) = handleOf(call.effect(effect).layer);
    });
}

A_Err getNewEffectForEffect(AEGP_PluginID plugin, PF_ProgPtr effect, AEGP_EffectRefH* reference) {
    return serve<AEGP_PFInterfaceSuite1>("AEGP_GetNewEffectForEffect", plugin,
                                         [&](const SceneCall& call) {
                                             AEGP_EffectRefH& result = call.at(reference);
                                             result = references::newEffectRef(call.effect(effect));
                                         });
}

// An effect's time is the time of its layer.
A_Err convertEffectToCompTime(PF_ProgPtr effect, A_long whatTime, A_u_long timeScale,
                              A_Time* compTime) {
    return serve<AEGP_PFInterfaceSuite1>(
        "AEGP_ConvertEffectToCompTime", [&](const SceneCall& call) {
            if (timeScale == 0)
                call.fail("a time of scale 0");
            const double start = call.effect(effect).layer->inSeconds * timeScale;
            call.at(compTime) = {static_cast<A_long>(whatTime + std::lround(start)), timeScale};
        });
}

A_Err getEffectCamera(PF_ProgPtr effect, const A_Time* compTime, AEGP_LayerH* camera) {
    return serve<AEGP_PFInterfaceSuite1>("AEGP_GetEffectCamera", [&](const SceneCall& call) {
        Composition& around = *call.effect(effect).layer->composition;
        call.at(camera) = handleOf(around.activeCamera(call.seconds(compTime)));
    });
}

} // namespace

const AEGP_PFInterfaceSuite1& interfaceSuite() {
    static const AEGP_PFInterfaceSuite1 table = {getEffectLayer, getNewEffectForEffect,
                                                 convertEffectToCompTime, getEffectCamera};
    return table;
}

} // namespace hostkit::tables
