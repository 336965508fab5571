// Argument checks for the functions of the scene suites: every misuse becomes a fault in the ledger
// and an error code.
//
// The checks throw; `serve` catches. Handles are looked up in the live-object registry
// (live_object.h), references in the ledger. Requires a Host.
#pragma once

#include <cstddef>
#include <string>

#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/references.h"
#include "hostkit/project/project.h"

namespace hostkit {

// Thrown to end a call with this code. The thrower has recorded the fault, if it is one.
struct CallFailure {
    PF_Err code;
};

// The checks of one running call. Each names the call in its fault.
class SceneCall {
public:
    explicit SceneCall(const char* contractName) : name(contractName) {}

    [[noreturn]] void fail(const std::string& why) const;

    template<class T>
    T& at(T* place) const {
        if (place == nullptr)
            fail("a null pointer");
        return *place;
    }

    Effect& effect(AEGP_EffectRefH reference) const;
    Effect& effect(PF_ProgPtr instance) const;
    Layer& layer(AEGP_LayerH handle) const;
    Composition& composition(AEGP_CompH handle) const;
    Item& item(AEGP_ItemH handle) const; // a composition or the source of a layer
    Stream& stream(AEGP_StreamRefH reference) const;
    Stream& leaf(AEGP_StreamRefH reference) const; // a stream with values
    Stream& group(AEGP_StreamRefH reference) const;

    // Reads a value for stream `wanted` from the record, which must contain a reference to that
    // stream. Reads only the fields of the stream's type. A marker must be in an acquired value.
    StreamValue value(const Stream& wanted, const AEGP_StreamValue2* record) const;

    // Checks an index that counts from 0.
    std::size_t index(A_long wanted, std::size_t count) const;

    // The flags with the single flag `oneFlag` set or cleared.
    A_long withFlag(A_long flags, A_long oneFlag, bool isSet) const;

    double seconds(const A_Time* time) const;

    // Converts a time of the layer or of its composition (by `mode`) to seconds of the layer's
    // time, and back. Without a layer, both are the composition's time.
    double layerSeconds(const Layer* layer, AEGP_LTimeMode mode, const A_Time* time) const;
    A_Time time(const Layer* layer, AEGP_LTimeMode mode, double layerSeconds) const;

    const char* const name;

private:
    template<class T>
    T& known(T* object, const char* what) const {
        if (object == nullptr)
            fail(std::string("not a valid handle of a ") + what);
        return *object;
    }
    double start(const Layer* layer, AEGP_LTimeMode mode) const;
};

template<class Body>
PF_Err errorOf(const char* contractName, const Body& body) {
    try {
        body(SceneCall(contractName));
        return PF_Err_NONE;
    } catch (const CallFailure& failure) {
        return failure.code;
    }
}

// Runs the body of a function of that suite; `plugin` is the caller's id, for functions that
// receive it.
template<class Suite = void, class Body>
PF_Err serve(const char* contractName, const Body& body) {
    return contractCall<Suite>(contractName, [&] { return errorOf(contractName, body); });
}
template<class Suite, class Body>
PF_Err serve(const char* contractName, AEGP_PluginID plugin, const Body& body) {
    return contractCall<Suite>(contractName, plugin, [&] { return errorOf(contractName, body); });
}

// The contract's handles of the host's objects.
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
