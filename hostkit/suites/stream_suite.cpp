// Suite for streams of layers and effects: references, values, expressions.
#include "hostkit/calls/memory_handles.h"
#include "hostkit/calls/scene_call.h"
#include "hostkit/host.h"
#include "hostkit/project/undo.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

Stream& layerStream(const SceneCall& call, AEGP_LayerH layer, AEGP_LayerStream which) {
    Stream* stream = call.layer(layer).stream(which);
    if (stream == nullptr)
        call.fail("the layer has no stream " + std::to_string(which));
    return *stream;
}

StreamValue valueAt(const Stream& stream, double seconds, A_Boolean preExpression) {
    return preExpression != 0 ? stream.at(seconds) : stream.withExpression(seconds);
}

A_Err getNewLayerStream(AEGP_PluginID plugin, AEGP_LayerH layer, AEGP_LayerStream which,
                        AEGP_StreamRefH* stream) {
    return serve<AEGP_StreamSuite9>("AEGP_GetNewLayerStream", plugin, [&](const SceneCall& call) {
        AEGP_StreamRefH& result = call.at(stream);
        Stream& found = layerStream(call, layer, which);
        result = references::newStreamRef(found, found.matchName + " of layer " +
                                                     std::to_string(found.layer->id));
    });
}

A_Err getNewEffectStreamByIndex(AEGP_PluginID plugin, AEGP_EffectRefH effect, A_long index,
                                AEGP_StreamRefH* stream) {
    return serve<AEGP_StreamSuite9>(
        "AEGP_GetNewEffectStreamByIndex", plugin, [&](const SceneCall& call) {
            AEGP_StreamRefH& result = call.at(stream);
            const Stream& group = call.at(call.effect(effect).group.get());
            Stream& found = *group.children[call.index(index, group.children.size())];
            result = references::newStreamRef(found, "control " + std::to_string(index));
        });
}

// A null stream is an error but no fault: the module may dispose of a stream that it failed to get.
A_Err disposeStream(AEGP_StreamRefH stream) {
    return serve<AEGP_StreamSuite9>("AEGP_DisposeStream", [&](const SceneCall& call) {
        if (!references::release(stream, call.name))
            throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    });
}

A_Err getStreamName(AEGP_PluginID plugin, AEGP_StreamRefH stream, A_Boolean,
                    AEGP_MemHandle* utf16) {
    return serve<AEGP_StreamSuite9>("AEGP_GetStreamName", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& result = call.at(utf16);
        result = newTextHandle(call.stream(stream).name);
    });
}

A_Err getStreamType(AEGP_StreamRefH stream, AEGP_StreamType* type) {
    return serve<AEGP_StreamSuite9>("AEGP_GetStreamType", [&](const SceneCall& call) {
        call.at(type) = call.stream(stream).type;
    });
}

A_Err getNewStreamValue(AEGP_PluginID plugin, AEGP_StreamRefH stream, AEGP_LTimeMode mode,
                        const A_Time* time, A_Boolean preExpression, AEGP_StreamValue2* value) {
    return serve<AEGP_StreamSuite9>("AEGP_GetNewStreamValue", plugin, [&](const SceneCall& call) {
        const Stream& found = call.leaf(stream);
        const double seconds = call.layerSeconds(found.layer, mode, time);
        references::newStreamValue(stream, valueAt(found, seconds, preExpression), call.at(value));
    });
}

A_Err disposeStreamValue(AEGP_StreamValue2* value) {
    return serve<AEGP_StreamSuite9>("AEGP_DisposeStreamValue", [&](const SceneCall& call) {
        if (!references::release(call.at(value), call.name))
            throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    });
}

// Setting a stream with keyframes is an error but no fault: the user can add keyframes at any time.
A_Err setStreamValue(AEGP_PluginID plugin, AEGP_StreamRefH stream, AEGP_StreamValue2* value) {
    return serve<AEGP_StreamSuite9>("AEGP_SetStreamValue", plugin, [&](const SceneCall& call) {
        Stream& found = call.leaf(stream);
        const StreamValue wanted = call.value(found, value);
        if (!found.keyframes.empty())
            throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
        const StreamValue before = found.constant;
        const bool wasModified = found.isModified;
        found.set(wanted, 0);
        if (areSame(before, found.constant, found.type)) {
            found.isModified = wasModified;
            return;
        }
        Host::current().project.undo->record(found, [before, wasModified](Stream& changed) {
            changed.constant = before;
            changed.isModified = wasModified;
        });
    });
}

A_Err getLayerStreamValue(AEGP_LayerH layer, AEGP_LayerStream which, AEGP_LTimeMode mode,
                          const A_Time* time, A_Boolean preExpression, AEGP_StreamVal2* value,
                          AEGP_StreamType* type) {
    return serve<AEGP_StreamSuite9>("AEGP_GetLayerStreamValue", [&](const SceneCall& call) {
        const Stream& found = layerStream(call, layer, which);
        if (componentCount(found.type) == 0)
            call.fail("a value that is not disposed of");
        const double seconds = call.layerSeconds(found.layer, mode, time);
        call.at(value) = valueAt(found, seconds, preExpression).value;
        if (type != nullptr)
            *type = found.type;
    });
}

A_Err getExpressionState(AEGP_PluginID plugin, AEGP_StreamRefH stream, A_Boolean* isEnabled) {
    return serve<AEGP_StreamSuite9>("AEGP_GetExpressionState", plugin, [&](const SceneCall& call) {
        call.at(isEnabled) = call.leaf(stream).isExpressionEnabled ? 1 : 0;
    });
}

A_Err setExpressionState(AEGP_PluginID plugin, AEGP_StreamRefH stream, A_Boolean isEnabled) {
    return serve<AEGP_StreamSuite9>("AEGP_SetExpressionState", plugin, [&](const SceneCall& call) {
        call.leaf(stream).isExpressionEnabled = isEnabled != 0;
    });
}

A_Err getExpression(AEGP_PluginID plugin, AEGP_StreamRefH stream, AEGP_MemHandle* utf16) {
    return serve<AEGP_StreamSuite9>("AEGP_GetExpression", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& result = call.at(utf16);
        result = newTextHandle(call.leaf(stream).expression);
    });
}

A_Err setExpression(AEGP_PluginID plugin, AEGP_StreamRefH stream, const A_UTF16Char* expression) {
    return serve<AEGP_StreamSuite9>("AEGP_SetExpression", plugin, [&](const SceneCall& call) {
        call.leaf(stream).expression = &call.at(expression);
    });
}

} // namespace

const AEGP_StreamSuite9& streamSuite() {
    static const AEGP_StreamSuite9 table = {
        getNewLayerStream,   getNewEffectStreamByIndex, disposeStream,      getStreamName,
        getStreamType,       getNewStreamValue,         disposeStreamValue, setStreamValue,
        getLayerStreamValue, getExpressionState,        setExpressionState, getExpression,
        setExpression,       getNewMaskOutlineStream,
    };
    return table;
}

} // namespace hostkit::tables
