// Suite for layers: type, time span, transform, parent.
#include "hostkit/calls/memory_handles.h"
#include "hostkit/calls/scene_call.h"
#include "hostkit/services/text.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getCompNumLayers(AEGP_CompH comp, A_long* count) {
    return serve<AEGP_LayerSuite12>("AEGP_GetCompNumLayers", [&](const SceneCall& call) {
        call.at(count) = static_cast<A_long>(call.composition(comp).layers.size());
    });
}

A_Err getCompLayerByIndex(AEGP_CompH comp, A_long index, AEGP_LayerH* layer) {
    return serve<AEGP_LayerSuite12>("AEGP_GetCompLayerByIndex", [&](const SceneCall& call) {
        const auto& layers = call.composition(comp).layers;
        call.at(layer) = handleOf(layers[call.index(index, layers.size())].get());
    });
}

A_Err getLayerFromLayerId(AEGP_CompH comp, AEGP_LayerIDVal id, AEGP_LayerH* layer) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerFromLayerID", [&](const SceneCall& call) {
        Layer* found = call.composition(comp).findLayer(id);
        if (found == nullptr)
            call.fail("no layer has the id " + std::to_string(id));
        call.at(layer) = handleOf(found);
    });
}

// Null for a layer without a source, such as a camera.
A_Err getLayerSourceItem(AEGP_LayerH layer, AEGP_ItemH* item) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerSourceItem", [&](const SceneCall& call) {
        call.at(item) = handleOf(static_cast<Item*>(call.layer(layer).source.get()));
    });
}

A_Err getLayerParentComp(AEGP_LayerH layer, AEGP_CompH* comp) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerParentComp", [&](const SceneCall& call) {
        call.at(comp) = handleOf(call.layer(layer).composition);
    });
}

A_Err getLayerId(AEGP_LayerH layer, AEGP_LayerIDVal* id) {
    return serve<AEGP_LayerSuite12>(
        "AEGP_GetLayerID", [&](const SceneCall& call) { call.at(id) = call.layer(layer).id; });
}

A_Err getLayerObjectType(AEGP_LayerH layer, AEGP_ObjectType* type) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerObjectType", [&](const SceneCall& call) {
        call.at(type) = call.layer(layer).type;
    });
}

A_Err getLayerCurrentTime(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* time) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerCurrentTime", [&](const SceneCall& call) {
        const Layer& found = call.layer(layer);
        const A_Time& now = found.composition->now;
        call.at(time) = call.time(&found, mode, call.seconds(&now) - found.inSeconds);
    });
}

A_Err getLayerName(AEGP_PluginID plugin, AEGP_LayerH layer, AEGP_MemHandle* utf16LayerName,
                   AEGP_MemHandle* utf16SourceName) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerName", plugin, [&](const SceneCall& call) {
        const Layer& found = call.layer(layer);
        if (utf16LayerName != nullptr)
            *utf16LayerName = newTextHandle(found.name);
        if (utf16SourceName != nullptr)
            *utf16SourceName = newTextHandle(toUtf16(found.source ? found.source->name : ""));
    });
}

A_Err setLayerName(AEGP_LayerH layer, const A_UTF16Char* layerName) {
    return serve<AEGP_LayerSuite12>("AEGP_SetLayerName", [&](const SceneCall& call) {
        call.layer(layer).name = &call.at(layerName);
    });
}

A_Err getLayerFlags(AEGP_LayerH layer, AEGP_LayerFlags* flags) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerFlags", [&](const SceneCall& call) {
        call.at(flags) = call.layer(layer).flags;
    });
}

A_Err setLayerFlag(AEGP_LayerH layer, AEGP_LayerFlags oneFlag, A_Boolean isSet) {
    return serve<AEGP_LayerSuite12>("AEGP_SetLayerFlag", [&](const SceneCall& call) {
        AEGP_LayerFlags& flags = call.layer(layer).flags;
        flags = call.withFlag(flags, oneFlag, isSet != 0);
    });
}

A_Err isLayerVideoReallyOn(AEGP_LayerH layer, A_Boolean* isOn) {
    return serve<AEGP_LayerSuite12>("AEGP_IsLayerVideoReallyOn", [&](const SceneCall& call) {
        call.at(isOn) = (call.layer(layer).flags & AEGP_LayerFlag_VIDEO_ACTIVE) != 0 ? 1 : 0;
    });
}

A_Err getLayerInPoint(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* time) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerInPoint", [&](const SceneCall& call) {
        call.at(time) = call.time(&call.layer(layer), mode, 0);
    });
}

A_Err getLayerDuration(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* duration) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerDuration", [&](const SceneCall& call) {
        // A duration is the same in layer time and composition time.
        call.at(duration) = call.time(nullptr, mode, call.layer(layer).durationSeconds);
    });
}

A_Err getLayerToWorldXform(AEGP_LayerH layer, const A_Time* compTime, A_Matrix4* transform) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerToWorldXform", [&](const SceneCall& call) {
        call.at(transform) = call.layer(layer).toWorld(call.seconds(compTime));
    });
}

A_Err getLayerParent(AEGP_LayerH layer, AEGP_LayerH* parent) {
    return serve<AEGP_LayerSuite12>("AEGP_GetLayerParent", [&](const SceneCall& call) {
        call.at(parent) = handleOf(call.layer(layer).parent);
    });
}

A_Err setLayerParent(AEGP_LayerH layer, AEGP_LayerH parent) {
    return serve<AEGP_LayerSuite12>("AEGP_SetLayerParent", [&](const SceneCall& call) {
        Layer& child = call.layer(layer);
        Layer* wanted = parent == nullptr ? nullptr : &call.layer(parent);
        if (wanted != nullptr && wanted->composition != child.composition)
            call.fail("a parent in another composition");
        for (const Layer* each = wanted; each != nullptr; each = each->parent)
            if (each == &child)
                call.fail("a parent that is the layer itself or its descendant");
        child.parent = wanted;
    });
}

} // namespace

const AEGP_LayerSuite12& layerSuite() {
    static const AEGP_LayerSuite12 table = {
        getCompNumLayers,     getCompLayerByIndex, getLayerFromLayerId, getLayerSourceItem,
        getLayerParentComp,   getLayerId,          getLayerObjectType,  getLayerCurrentTime,
        getLayerName,         setLayerName,        getLayerFlags,       setLayerFlag,
        isLayerVideoReallyOn, getLayerInPoint,     getLayerDuration,    getLayerToWorldXform,
        getLayerParent,       setLayerParent,
    };
    return table;
}

} // namespace hostkit::tables
