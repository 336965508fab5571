// Suite for mask outlines in stream values.
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

Outline& outline(const SceneCall& call, AEGP_MaskOutlineValH handle) {
    const std::shared_ptr<Outline> found = references::find(handle, call.name);
    if (found == nullptr)
        throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    return *found; // owned by the acquired value
}

AEGP_MaskVertex& vertex(const SceneCall& call, AEGP_MaskOutlineValH handle, A_long index) {
    std::vector<AEGP_MaskVertex>& vertices = outline(call, handle).vertices;
    return vertices[call.index(index, vertices.size())];
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

// The index may be the number of vertices, which appends.
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
