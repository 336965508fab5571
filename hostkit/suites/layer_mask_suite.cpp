// Suite for the masks of a layer. A mask's handle is its address; acquisitions are counted.
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

Mask& mask(const SceneCall& call, AEGP_MaskRefH handle) {
    if (!ledger::requireAcquired(ledger::Kind::Mask, handle, call.name))
        throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    Mask* found = LiveObject<Mask>::find(handle);
    if (found == nullptr)
        call.fail("a mask that no longer exists");
    return *found;
}

A_Err getLayerNumMasks(AEGP_LayerH layer, A_long* count) {
    return serve<AEGP_LayerMaskSuite5>("AEGP_GetLayerNumMasks", [&](const SceneCall& call) {
        call.at(count) = static_cast<A_long>(call.layer(layer).masks.size());
    });
}

A_Err getLayerMaskByIndex(AEGP_LayerH layer, A_long index, AEGP_MaskRefH* result) {
    return serve<AEGP_LayerMaskSuite5>("AEGP_GetLayerMaskByIndex", [&](const SceneCall& call) {
        AEGP_MaskRefH& place = call.at(result);
        const auto& masks = call.layer(layer).masks;
        Mask* found = masks[call.index(index, masks.size())].get();
        ledger::acquire(ledger::Kind::Mask, found, "mask " + std::to_string(found->id));
        place = reinterpret_cast<AEGP_MaskRefH>(found);
    });
}

A_Err disposeMask(AEGP_MaskRefH handle) {
    return serve<AEGP_LayerMaskSuite5>("AEGP_DisposeMask", [&](const SceneCall& call) {
        if (!ledger::release(ledger::Kind::Mask, handle, call.name))
            throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    });
}

A_Err getMaskId(AEGP_MaskRefH handle, AEGP_MaskIDVal* id) {
    return serve<AEGP_LayerMaskSuite5>(
        "AEGP_GetMaskID", [&](const SceneCall& call) { call.at(id) = mask(call, handle).id; });
}

} // namespace

A_Err getNewMaskOutlineStream(AEGP_PluginID plugin, AEGP_MaskRefH handle, AEGP_StreamRefH* stream) {
    return serve<AEGP_StreamSuite9>(
        "AEGP_GetNewMaskOutlineStream", plugin, [&](const SceneCall& call) {
            AEGP_StreamRefH& result = call.at(stream);
            Mask& found = mask(call, handle);
            result = references::newStreamRef(found.outline,
                                              "outline of mask " + std::to_string(found.id));
        });
}

const AEGP_LayerMaskSuite5& layerMaskSuite() {
    static const AEGP_LayerMaskSuite5 table = {getLayerNumMasks, getLayerMaskByIndex, disposeMask,
                                               getMaskId};
    return table;
}

} // namespace hostkit::tables
