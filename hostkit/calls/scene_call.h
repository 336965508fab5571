// One call of the contract as the scene suites serve it: its arguments are checked, and every
// misuse becomes a fault in the ledger and an error code.
//
// The checks throw; `serve` catches. Handles are looked up among the objects that exist
// (live_object.h), references in the ledger; both are the host's, and there must be one.
#pragma once

#include <cstddef>
#include <string>

#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/references.h"
#include "hostkit/project/project.h"

namespace hostkit {

// Ends a call with that code. Whoever throws it has noted the fault, if it is one.
struct Refusal {
    PF_Err code;
};

// The checks of one running call; each names the call in its fault.
class SceneCall {
public:
    explicit SceneCall(const char* contractName) : name(contractName) {}

    [[noreturn]] void refuse(const std::string& why) const;

    template<class T>
    T& at(T* place) const {
        if (place == nullptr)
            refuse("a null pointer");
        return *place;
    }

    Effect& effect(AEGP_EffectRefH reference) const;
    Effect& effect(PF_ProgPtr instance) const;
    Layer& layer(AEGP_LayerH handle) const;
    Composition& composition(AEGP_CompH handle) const;
    Item& item(AEGP_ItemH handle) const; // a composition or what a layer shows
    Stream& stream(AEGP_StreamRefH reference) const;
    Stream& leaf(AEGP_StreamRefH reference) const; // one that has values
    Stream& group(AEGP_StreamRefH reference) const;

    // The stream's value out of the record, which must name a reference to that very stream. Only
    // what the stream's type has is read. A marker must be an acquired one.
    StreamValue value(const Stream& wanted, const AEGP_StreamValue2* record) const;

    // An index that counts from 0.
    std::size_t index(A_long wanted, std::size_t count) const;

    // The flags with exactly one of them set or cleared.
    A_long withFlag(A_long flags, A_long oneFlag, bool isSet) const;

    double seconds(const A_Time* time) const;

    // What the layer's clock shows at a time of that clock or of its composition's, and back. A
    // stream without a layer counts in the composition's time.
    double layerSeconds(const Layer* layer, AEGP_LTimeMode mode, const A_Time* time) const;
    A_Time time(const Layer* layer, AEGP_LTimeMode mode, double layerSeconds) const;

    const char* const name;

private:
    template<class T>
    T& known(T* object, const char* what) const {
        if (object == nullptr)
            refuse(std::string("a handle of no ") + what);
        return *object;
    }
    double start(const Layer* layer, AEGP_LTimeMode mode) const;
};

template<class Body>
PF_Err answerOf(const char* contractName, const Body& body) {
    try {
        body(SceneCall(contractName));
        return PF_Err_NONE;
    } catch (const Refusal& refusal) {
        return refusal.code;
    }
}

// A function of that suite; `plugin` is the id of its caller, for those that are told it.
template<class Suite = void, class Body>
PF_Err serve(const char* contractName, const Body& body) {
    return contractCall<Suite>(contractName, [&] { return answerOf(contractName, body); });
}
template<class Suite, class Body>
PF_Err serve(const char* contractName, AEGP_PluginID plugin, const Body& body) {
    return contractCall<Suite>(contractName, plugin, [&] { return answerOf(contractName, body); });
}

// Handles of the contract out of the host's objects.
inline AEGP_LayerH handleOf(Layer* layer) {
    return reinterpret_cast<AEGP_LayerH>(layer);
}
inline AEGP_CompH handleOf(Composition* composition) {
    return reinterpret_cast<AEGP_CompH>(composition);
}
inline AEGP_ItemH handleOf(Item* item) {
    return reinterpret_cast<AEGP_ItemH>(item);
}

} // namespace hostkit
