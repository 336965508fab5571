// Suite for the effects of a layer and for the installed plug-ins. The key of a plug-in is its
// number in loading order.
#include <algorithm>

#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

constexpr A_long effectIsActive = 1;

Plugin& installed(const SceneCall& call, AEGP_InstalledEffectKey key) {
    for (Plugin* each : LiveObject<Plugin>::all())
        if (each->live.number() == key)
            return *each;
    call.fail("no installed effect has the key " + std::to_string(key));
}

A_Err getLayerNumEffects(AEGP_LayerH layer, A_long* count) {
    return serve<AEGP_EffectSuite3>("AEGP_GetLayerNumEffects", [&](const SceneCall& call) {
        call.at(count) = static_cast<A_long>(call.layer(layer).effects.size());
    });
}

A_Err getLayerEffectByIndex(AEGP_PluginID plugin, AEGP_LayerH layer, A_long index,
                            AEGP_EffectRefH* effect) {
    return serve<AEGP_EffectSuite3>(
        "AEGP_GetLayerEffectByIndex", plugin, [&](const SceneCall& call) {
            AEGP_EffectRefH& result = call.at(effect);
            const auto& effects = call.layer(layer).effects;
            result = references::newEffectRef(*effects[call.index(index, effects.size())]);
        });
}

A_Err getInstalledKeyFromLayerEffect(AEGP_EffectRefH effect, AEGP_InstalledEffectKey* key) {
    return serve<AEGP_EffectSuite3>(
        "AEGP_GetInstalledKeyFromLayerEffect",
        [&](const SceneCall& call) { call.at(key) = call.effect(effect).plugin->live.number(); });
}

A_Err getEffectFlags(AEGP_EffectRefH effect, A_long* flags) {
    return serve<AEGP_EffectSuite3>("AEGP_GetEffectFlags", [&](const SceneCall& call) {
        call.effect(effect);
        call.at(flags) = effectIsActive;
    });
}

A_Err disposeEffect(AEGP_EffectRefH effect) {
    return serve<AEGP_EffectSuite3>("AEGP_DisposeEffect", [&](const SceneCall& call) {
        if (!references::release(effect, call.name))
            throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    });
}

// If setup fails, the new instance is removed from the layer.
A_Err applyEffect(AEGP_PluginID plugin, AEGP_LayerH layer, AEGP_InstalledEffectKey key,
                  AEGP_EffectRefH* effect) {
    return serve<AEGP_EffectSuite3>("AEGP_ApplyEffect", plugin, [&](const SceneCall& call) {
        AEGP_EffectRefH& result = call.at(effect);
        auto& effects = call.layer(layer).effects;
        effects.push_back(std::make_unique<Effect>(installed(call, key), call.layer(layer)));
        Effect* made = effects.back().get();
        const PF_Err error = made->apply();
        if (error == 0) {
            result = references::newEffectRef(*made);
            return;
        }
        const auto place = std::find_if(effects.begin(), effects.end(),
                                        [made](const auto& each) { return each.get() == made; });
        const std::unique_ptr<Effect> gone = std::move(*place);
        effects.erase(place); // removed from the list first, because setdown may ask for the list
        throw CallFailure{error};
    });
}

A_Err getNumInstalledEffects(A_long* count) {
    return serve<AEGP_EffectSuite3>("AEGP_GetNumInstalledEffects", [&](const SceneCall& call) {
        call.at(count) = static_cast<A_long>(LiveObject<Plugin>::all().size());
    });
}

A_Err getNextInstalledEffect(AEGP_InstalledEffectKey key, AEGP_InstalledEffectKey* next) {
    return serve<AEGP_EffectSuite3>("AEGP_GetNextInstalledEffect", [&](const SceneCall& call) {
        if (key != 0)
            installed(call, key);
        const auto& all = LiveObject<Plugin>::all();
        const auto found = std::find_if(all.begin(), all.end(), [key](const Plugin* each) {
            return each->live.number() > key;
        });
        call.at(next) = found == all.end() ? 0 : (*found)->live.number();
    });
}

A_Err getEffectMatchName(AEGP_InstalledEffectKey key,
                         char matchName[AEGP_MAX_EFFECT_MATCH_NAME_SIZE]) {
    return serve<AEGP_EffectSuite3>("AEGP_GetEffectMatchName", [&](const SceneCall& call) {
        char& start = call.at(matchName);
        const std::string found = installed(call, key).pipl().text("eMNA");
        const std::size_t length = found.copy(&start, AEGP_MAX_EFFECT_MATCH_NAME_SIZE - 1);
        matchName[length] = '\0';
    });
}

} // namespace

const AEGP_EffectSuite3& effectSuite() {
    static const AEGP_EffectSuite3 table = {
        getLayerNumEffects,     getLayerEffectByIndex,  getInstalledKeyFromLayerEffect,
        getEffectFlags,         disposeEffect,          applyEffect,
        getNumInstalledEffects, getNextInstalledEffect, getEffectMatchName,
    };
    return table;
}

} // namespace hostkit::tables
