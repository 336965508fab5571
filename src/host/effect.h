// Owns a reference to an effect instance and disposes of it.
#pragma once

#include <array>

#include "host/object_base.h"
#include "sdk/aegp_suites.h"
#include "support/text.h"

namespace AEO {

class Effect : public ObjectBase {
public:
    // Takes over the reference, which may be null.
    Effect(SPBasicSuite* basic, AEGP_EffectRefH effect)
        : effect_(effect), effects_(basic), streams_(basic) {}
    // For the operations that need no instance.
    explicit Effect(SPBasicSuite* basic) : Effect(basic, nullptr) {}
    ~Effect() override {
        if (effect_ != nullptr)
            dispose(effects_, &AEGP_EffectSuite3::AEGP_DisposeEffect, effect_);
    }

    // The stream of a parameter, as a new reference for a Stream to own.
    AEGP_StreamRefH newParamStream(A_long index) {
        return query(streams_, &AEGP_StreamSuite9::AEGP_GetNewEffectStreamByIndex, currentPluginId,
                     effect_, index);
    }

    AEGP_InstalledEffectKey installedKey() {
        return query(effects_, &AEGP_EffectSuite3::AEGP_GetInstalledKeyFromLayerEffect, effect_);
    }
    A_long flags() { return query(effects_, &AEGP_EffectSuite3::AEGP_GetEffectFlags, effect_); }

    // These need no instance. Key 0 marks the start and the end of the list of installed effects.
    A_long numInstalledEffects() {
        return query(effects_, &AEGP_EffectSuite3::AEGP_GetNumInstalledEffects);
    }
    AEGP_InstalledEffectKey nextInstalledEffect(AEGP_InstalledEffectKey key) {
        return query(effects_, &AEGP_EffectSuite3::AEGP_GetNextInstalledEffect, key);
    }
    NarrowString matchName(AEGP_InstalledEffectKey key) {
        std::array<char, AEGP_MAX_EFFECT_MATCH_NAME_SIZE> text{};
        call(effects_, &AEGP_EffectSuite3::AEGP_GetEffectMatchName, key, text.data());
        text.back() = 0;
        return text.data();
    }

private:
    AEGP_EffectRefH effect_;
    SuiteHolder<AEGP_EffectSuite3, OnRefusal::UseTable> effects_;
    SuiteHolder<AEGP_StreamSuite9, OnRefusal::UseTable> streams_;
};

} // namespace AEO
