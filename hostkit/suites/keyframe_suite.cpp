// Suite for the keyframes of a stream, added one by one or as a batch (all or none).
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

Keyframe& keyframe(const SceneCall& call, Stream& stream, A_long index) {
    return stream.keyframes[call.index(index, stream.keyframes.size())];
}

Keyframe& keyframe(const SceneCall& call, AEGP_StreamRefH stream, A_long index) {
    return keyframe(call, call.leaf(stream), index);
}

A_Err getStreamNumKeyframes(AEGP_StreamRefH stream, A_long* count) {
    return serve<AEGP_KeyframeSuite4>("AEGP_GetStreamNumKFs", [&](const SceneCall& call) {
        call.at(count) = static_cast<A_long>(call.stream(stream).keyframes.size());
    });
}

A_Err getKeyframeTime(AEGP_StreamRefH stream, A_long index, AEGP_LTimeMode mode, A_Time* time) {
    return serve<AEGP_KeyframeSuite4>("AEGP_GetKeyframeTime", [&](const SceneCall& call) {
        Stream& found = call.leaf(stream);
        call.at(time) = call.time(found.layer, mode, keyframe(call, found, index).seconds);
    });
}

A_Err insertKeyframe(AEGP_StreamRefH stream, AEGP_LTimeMode mode, const A_Time* time,
                     A_long* index) {
    return serve<AEGP_KeyframeSuite4>("AEGP_InsertKeyframe", [&](const SceneCall& call) {
        A_long& place = call.at(index);
        Stream& found = call.leaf(stream);
        place = static_cast<A_long>(found.addKeyframe(call.layerSeconds(found.layer, mode, time)));
    });
}

A_Err deleteKeyframe(AEGP_StreamRefH stream, A_long index) {
    return serve<AEGP_KeyframeSuite4>("AEGP_DeleteKeyframe", [&](const SceneCall& call) {
        Stream& found = call.leaf(stream);
        found.removeKeyframe(call.index(index, found.keyframes.size()));
    });
}

A_Err getNewKeyframeValue(AEGP_PluginID plugin, AEGP_StreamRefH stream, A_long index,
                          AEGP_StreamValue2* value) {
    return serve<AEGP_KeyframeSuite4>(
        "AEGP_GetNewKeyframeValue", plugin, [&](const SceneCall& call) {
            references::newStreamValue(stream, keyframe(call, stream, index).value, call.at(value));
        });
}

A_Err setKeyframeValue(AEGP_StreamRefH stream, A_long index, const AEGP_StreamValue2* value) {
    return serve<AEGP_KeyframeSuite4>("AEGP_SetKeyframeValue", [&](const SceneCall& call) {
        Stream& found = call.leaf(stream);
        const std::size_t place = call.index(index, found.keyframes.size());
        found.setKeyframe(place, call.value(found, value));
    });
}

A_Err getKeyframeFlags(AEGP_StreamRefH stream, A_long index, AEGP_KeyframeFlags* flags) {
    return serve<AEGP_KeyframeSuite4>("AEGP_GetKeyframeFlags", [&](const SceneCall& call) {
        call.at(flags) = keyframe(call, stream, index).flags;
    });
}

A_Err setKeyframeFlag(AEGP_StreamRefH stream, A_long index, AEGP_KeyframeFlags flag,
                      A_Boolean isSet) {
    return serve<AEGP_KeyframeSuite4>("AEGP_SetKeyframeFlag", [&](const SceneCall& call) {
        AEGP_KeyframeFlags& flags = keyframe(call, stream, index).flags;
        flags = call.withFlag(flags, flag, isSet != 0);
    });
}

A_Err getKeyframeInterpolation(AEGP_StreamRefH stream, A_long index,
                               AEGP_KeyframeInterpolationType* in,
                               AEGP_KeyframeInterpolationType* out) {
    return serve<AEGP_KeyframeSuite4>("AEGP_GetKeyframeInterpolation", [&](const SceneCall& call) {
        const Keyframe& found = keyframe(call, stream, index);
        call.at(in) = found.in;
        call.at(out) = found.out;
    });
}

bool isInterpolation(AEGP_KeyframeInterpolationType type) {
    return type == AEGP_KeyInterp_LINEAR || type == AEGP_KeyInterp_HOLD;
}

A_Err setKeyframeInterpolation(AEGP_StreamRefH stream, A_long index,
                               AEGP_KeyframeInterpolationType in,
                               AEGP_KeyframeInterpolationType out) {
    return serve<AEGP_KeyframeSuite4>("AEGP_SetKeyframeInterpolation", [&](const SceneCall& call) {
        Keyframe& found = keyframe(call, stream, index);
        if (!isInterpolation(in) || !isInterpolation(out))
            call.fail("an unknown interpolation");
        found.in = in;
        found.out = out;
    });
}

AEGP_AddKeyframesInfo& openBatch(const SceneCall& call, AEGP_AddKeyframesInfoH batch) {
    AEGP_AddKeyframesInfo* found = references::find(batch, call.name);
    if (found == nullptr)
        throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    return *found;
}

// Valid only until the stream's owner is deleted.
Stream& streamOf(const SceneCall& call, const AEGP_AddKeyframesInfo& batch) {
    const auto found = batch.stream.lock();
    if (found == nullptr)
        call.fail("keyframes of a stream whose owner was deleted");
    return *found;
}

A_Err startAddKeyframes(AEGP_StreamRefH stream, AEGP_AddKeyframesInfoH* batch) {
    return serve<AEGP_KeyframeSuite4>("AEGP_StartAddKeyframes", [&](const SceneCall& call) {
        AEGP_AddKeyframesInfoH& result = call.at(batch);
        result = references::newKeyframeBatch(call.leaf(stream));
    });
}

A_Err addKeyframes(AEGP_AddKeyframesInfoH batch, AEGP_LTimeMode mode, const A_Time* time,
                   A_long* index) {
    return serve<AEGP_KeyframeSuite4>("AEGP_AddKeyframes", [&](const SceneCall& call) {
        A_long& place = call.at(index);
        AEGP_AddKeyframesInfo& open = openBatch(call, batch);
        const Stream& stream = streamOf(call, open);
        Keyframe made;
        made.seconds = call.layerSeconds(stream.layer, mode, time);
        made.value = stream.at(made.seconds);
        place = static_cast<A_long>(open.pending.size());
        open.pending.push_back(made);
    });
}

A_Err setAddKeyframe(AEGP_AddKeyframesInfoH batch, A_long index, const AEGP_StreamValue2* value) {
    return serve<AEGP_KeyframeSuite4>("AEGP_SetAddKeyframe", [&](const SceneCall& call) {
        AEGP_AddKeyframesInfo& open = openBatch(call, batch);
        Keyframe& pending = open.pending[call.index(index, open.pending.size())];
        pending.value = call.value(streamOf(call, open), value);
    });
}

A_Err endAddKeyframes(A_Boolean add, AEGP_AddKeyframesInfoH batch) {
    return serve<AEGP_KeyframeSuite4>("AEGP_EndAddKeyframes", [&](const SceneCall& call) {
        const AEGP_AddKeyframesInfo& ended = openBatch(call, batch);
        references::release(batch, call.name);
        if (add == 0)
            return;
        Stream& stream = streamOf(call, ended);
        for (const Keyframe& each : ended.pending)
            stream.setKeyframe(stream.addKeyframe(each.seconds), each.value);
    });
}

} // namespace

const AEGP_KeyframeSuite4& keyframeSuite() {
    static const AEGP_KeyframeSuite4 table = {
        getStreamNumKeyframes,    getKeyframeTime,          insertKeyframe,    deleteKeyframe,
        getNewKeyframeValue,      setKeyframeValue,         getKeyframeFlags,  setKeyframeFlag,
        getKeyframeInterpolation, setKeyframeInterpolation, startAddKeyframes, addKeyframes,
        setAddKeyframe,           endAddKeyframes,
    };
    return table;
}

} // namespace hostkit::tables
