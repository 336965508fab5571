// The host's view of the running effect instance: its layer, a reference to the instance, the time
// and the camera of its composition.
#pragma once

#include "host/object_base.h"
#include "sdk/aegp_suites.h"

namespace AEO {

class Interface : public ObjectBase {
public:
    // `effect` is the effect_ref of the input record.
    Interface(SPBasicSuite* basic, PF_ProgPtr effect) : effect_(effect), interfaces_(basic) {}

    AEGP_LayerH layer() {
        return query(interfaces_, &AEGP_PFInterfaceSuite1::AEGP_GetEffectLayer, effect_);
    }

    // A new reference, to be owned by an Effect.
    AEGP_EffectRefH newEffect() {
        return query(interfaces_, &AEGP_PFInterfaceSuite1::AEGP_GetNewEffectForEffect,
                     currentPluginId, effect_);
    }

    // The time of the composition at a time of the effect, which is in units of 1/timeScale
    // seconds.
    A_Time compTime(A_long effectTime, A_u_long timeScale) {
        return query(interfaces_, &AEGP_PFInterfaceSuite1::AEGP_ConvertEffectToCompTime, effect_,
                     effectTime, timeScale);
    }

    // The layer of the active camera at a time of the composition; null: none.
    AEGP_LayerH camera(const A_Time& compTime) {
        return query(interfaces_, &AEGP_PFInterfaceSuite1::AEGP_GetEffectCamera, effect_,
                     &compTime);
    }

private:
    PF_ProgPtr effect_;
    SuiteHolder<AEGP_PFInterfaceSuite1, OnRefusal::UseTable> interfaces_;
};

} // namespace AEO
