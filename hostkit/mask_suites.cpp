// The masks of a layer, and their outlines as stream values hold them. A mask's handle is its
// address; each time that it is lent counts.
#include "hostkit/scene_call.h"
#include "hostkit/suite_tables.h"

namespace hostkit::tables {

namespace {

Mask& mask(const SceneCall& call, AEGP_MaskRefH handle) {
    if (!ledger::requireLent(ledger::Kind::Mask, handle, call.name))
        throw Refusal{PF_Err_BAD_CALLBACK_PARAM};
    Mask* found = Living<Mask>::find(handle);
    if (found == nullptr)
        call.refuse("a mask that is gone");
    return *found;
}

Outline& outline(const SceneCall& call, AEGP_MaskOutlineValH handle) {
    const std::shared_ptr<Outline> found = references::find(handle, call.name);
    if (found == nullptr)
        throw Refusal{PF_Err_BAD_CALLBACK_PARAM};
    return *found; // the value that is out keeps it
}

AEGP_MaskVertex& vertex(const SceneCall& call, AEGP_MaskOutlineValH handle, A_long index) {
    std::vector<AEGP_MaskVertex>& vertices = outline(call, handle).vertices;
    return vertices[call.index(index, vertices.size())];
}

A_Err getLayerNumMasks(AEGP_LayerH layer, A_long* count) {
    return serve<AEGP_LayerMaskSuite5>("AEGP_GetLayerNumMasks", [&](const SceneCall& call) {
        call.at(count) = static_cast<A_long>(call.layer(layer).masks.size());
    });
}

A_Err getLayerMaskByIndex(AEGP_LayerH layer, A_long index, AEGP_MaskRefH* lent) {
    return serve<AEGP_LayerMaskSuite5>("AEGP_GetLayerMaskByIndex", [&](const SceneCall& call) {
        AEGP_MaskRefH& place = call.at(lent);
        const auto& masks = call.layer(layer).masks;
        Mask* found = masks[call.index(index, masks.size())].get();
        ledger::lend(ledger::Kind::Mask, found, "mask " + std::to_string(found->id));
        place = reinterpret_cast<AEGP_MaskRefH>(found);
    });
}

A_Err disposeMask(AEGP_MaskRefH handle) {
    return serve<AEGP_LayerMaskSuite5>("AEGP_DisposeMask", [&](const SceneCall& call) {
        if (!ledger::giveBack(ledger::Kind::Mask, handle, call.name))
            throw Refusal{PF_Err_BAD_CALLBACK_PARAM};
    });
}

A_Err getMaskId(AEGP_MaskRefH handle, AEGP_MaskIDVal* id) {
    return serve<AEGP_LayerMaskSuite5>(
        "AEGP_GetMaskID", [&](const SceneCall& call) { call.at(id) = mask(call, handle).id; });
}

A_Err isMaskOutlineOpen(AEGP_MaskOutlineValH handle, A_Boolean* isOpen) {
    return serve<AEGP_MaskOutlineSuite3>("AEGP_IsMaskOutlineOpen", [&](const SceneCall& call) {
        call.at(isOpen) = outline(call, handle).isOpen ? 1 : 0;
    });
}

A_Err setMaskOutlineOpen(AEGP_MaskOutlineValH handle, A_Boolean isOpen) {
    return serve<AEGP_MaskOutlineSuite3>("AEGP_SetMaskOutlineOpen", [&](const SceneCall& call) {
        outline(call, handle).isOpen = isOpen != 0;
    });
}

A_Err getMaskOutlineNumSegments(AEGP_MaskOutlineValH handle, A_long* count) {
    return serve<AEGP_MaskOutlineSuite3>(
        "AEGP_GetMaskOutlineNumSegments", [&](const SceneCall& call) {
            const Outline& found = outline(call, handle);
            const auto vertices = static_cast<A_long>(found.vertices.size());
            call.at(count) = found.isOpen && vertices > 0 ? vertices - 1 : vertices;
        });
}

A_Err getMaskOutlineVertexInfo(AEGP_MaskOutlineValH handle, A_long index, AEGP_MaskVertex* place) {
    return serve<AEGP_MaskOutlineSuite3>(
        "AEGP_GetMaskOutlineVertexInfo",
        [&](const SceneCall& call) { call.at(place) = vertex(call, handle, index); });
}

A_Err setMaskOutlineVertexInfo(AEGP_MaskOutlineValH handle, A_long index,
                               const AEGP_MaskVertex* wanted) {
    return serve<AEGP_MaskOutlineSuite3>(
        "AEGP_SetMaskOutlineVertexInfo",
        [&](const SceneCall& call) { vertex(call, handle, index) = call.at(wanted); });
}

// The index may be that behind the last.
A_Err createVertex(AEGP_MaskOutlineValH handle, A_long index) {
    return serve<AEGP_MaskOutlineSuite3>("AEGP_CreateVertex", [&](const SceneCall& call) {
        auto& vertices = outline(call, handle).vertices;
        const std::size_t at = call.index(index, vertices.size() + 1);
        vertices.insert(vertices.begin() + static_cast<std::ptrdiff_t>(at), AEGP_MaskVertex());
    });
}

A_Err deleteVertex(AEGP_MaskOutlineValH handle, A_long index) {
    return serve<AEGP_MaskOutlineSuite3>("AEGP_DeleteVertex", [&](const SceneCall& call) {
        auto& vertices = outline(call, handle).vertices;
        const std::size_t at = call.index(index, vertices.size());
        vertices.erase(vertices.begin() + static_cast<std::ptrdiff_t>(at));
    });
}

} // namespace

A_Err getNewMaskOutlineStream(AEGP_PluginID plugin, AEGP_MaskRefH handle, AEGP_StreamRefH* stream) {
    return serve<AEGP_StreamSuite9>(
        "AEGP_GetNewMaskOutlineStream", plugin, [&](const SceneCall& call) {
            AEGP_StreamRefH& lent = call.at(stream);
            Mask& found = mask(call, handle);
            lent = references::lendStream(found.outline,
                                          "outline of mask " + std::to_string(found.id));
        });
}

const AEGP_LayerMaskSuite5& layerMaskSuite() {
    static const AEGP_LayerMaskSuite5 table = {getLayerNumMasks, getLayerMaskByIndex, disposeMask,
                                               getMaskId};
    return table;
}

const AEGP_MaskOutlineSuite3& maskOutlineSuite() {
    static const AEGP_MaskOutlineSuite3 table = {
        isMaskOutlineOpen,
        setMaskOutlineOpen,
        getMaskOutlineNumSegments,
        getMaskOutlineVertexInfo,
        setMaskOutlineVertexInfo,
        createVertex,
        deleteVertex,
    };
    return table;
}

} // namespace hostkit::tables
