// Suite for the tree of streams: groups, names, visibility.
#include <algorithm>

#include "hostkit/calls/scene_call.h"
#include "hostkit/host.h"
#include "hostkit/project/undo.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getStreamGroupingType(AEGP_StreamRefH stream, AEGP_StreamGroupingType* type) {
    return serve<AEGP_DynamicStreamSuite5>(
        "AEGP_GetStreamGroupingType", [&](const SceneCall& call) {
            call.at(type) = call.stream(stream).isGroup() ? AEGP_StreamGroupingType_NAMED_GROUP
                                                          : AEGP_StreamGroupingType_LEAF;
        });
}

A_Err getNumStreamsInGroup(AEGP_StreamRefH group, A_long* count) {
    return serve<AEGP_DynamicStreamSuite5>("AEGP_GetNumStreamsInGroup", [&](const SceneCall& call) {
        call.at(count) = static_cast<A_long>(call.group(group).children.size());
    });
}

A_Err getDynamicStreamFlags(AEGP_StreamRefH stream, AEGP_DynStreamFlag* flags) {
    return serve<AEGP_DynamicStreamSuite5>(
        "AEGP_GetDynamicStreamFlags",
        [&](const SceneCall& call) { call.at(flags) = call.stream(stream).flags; });
}

A_Err setDynamicStreamFlag(AEGP_StreamRefH stream, AEGP_DynStreamFlag oneFlag, A_Boolean undoable,
                           A_Boolean set) {
    return serve<AEGP_DynamicStreamSuite5>("AEGP_SetDynamicStreamFlag", [&](const SceneCall& call) {
        Stream& found = call.stream(stream);
        if (oneFlag != AEGP_DynStreamFlag_HIDDEN)
            call.fail("a flag that cannot be set");
        const AEGP_DynStreamFlag before = found.flags;
        found.flags = call.withFlag(before, oneFlag, set != 0);
        if (undoable != 0 && found.flags != before)
            Host::current().project.undo->record(
                found, [before](Stream& changed) { changed.flags = before; });
    });
}

A_Err getNewStreamRefByIndex(AEGP_PluginID plugin, AEGP_StreamRefH group, A_long index,
                             AEGP_StreamRefH* child) {
    return serve<AEGP_DynamicStreamSuite5>(
        "AEGP_GetNewStreamRefByIndex", plugin, [&](const SceneCall& call) {
            AEGP_StreamRefH& result = call.at(child);
            const Stream& found = call.group(group);
            Stream& wanted = *found.children[call.index(index, found.children.size())];
            result = references::newStreamRef(wanted, wanted.matchName);
        });
}

A_Err getNewStreamRefByMatchname(AEGP_PluginID plugin, AEGP_StreamRefH group, const char* matchName,
                                 AEGP_StreamRefH* child) {
    return serve<AEGP_DynamicStreamSuite5>(
        "AEGP_GetNewStreamRefByMatchname", plugin, [&](const SceneCall& call) {
            AEGP_StreamRefH& result = call.at(child);
            const std::string wanted = &call.at(matchName);
            const auto& children = call.group(group).children;
            const auto found =
                std::find_if(children.begin(), children.end(),
                             [&](const auto& each) { return each->matchName == wanted; });
            if (found == children.end())
                call.fail("no stream called " + wanted);
            result = references::newStreamRef(**found, wanted);
        });
}

// Always false: no stream can be added to a group of this host.
A_Err canAddStream(AEGP_StreamRefH group, const char* matchName, A_Boolean* canAdd) {
    return serve<AEGP_DynamicStreamSuite5>("AEGP_CanAddStream", [&](const SceneCall& call) {
        call.group(group);
        call.at(matchName);
        call.at(canAdd) = 0;
    });
}

A_Err setStreamName(AEGP_StreamRefH stream, const A_UTF16Char* streamName) {
    return serve<AEGP_DynamicStreamSuite5>("AEGP_SetStreamName", [&](const SceneCall& call) {
        Stream& found = call.stream(stream);
        const std::u16string wanted = &call.at(streamName);
        if (found.name == wanted)
            return;
        Host::current().project.undo->record(
            found, [before = found.name](Stream& changed) { changed.name = before; });
        found.name = wanted;
    });
}

Stream& parentOf(const SceneCall& call, AEGP_StreamRefH stream) {
    Stream* parent = call.stream(stream).parent;
    if (parent == nullptr)
        call.fail("a stream without a parent group");
    return *parent;
}

A_Err getNewParentStreamRef(AEGP_PluginID plugin, AEGP_StreamRefH stream, AEGP_StreamRefH* parent) {
    return serve<AEGP_DynamicStreamSuite5>(
        "AEGP_GetNewParentStreamRef", plugin, [&](const SceneCall& call) {
            AEGP_StreamRefH& result = call.at(parent);
            Stream& found = parentOf(call, stream);
            result = references::newStreamRef(found, found.matchName);
        });
}

A_Err getMatchName(AEGP_StreamRefH stream, char matchName[AEGP_MAX_STREAM_MATCH_NAME_SIZE]) {
    return serve<AEGP_DynamicStreamSuite5>("AEGP_GetMatchName", [&](const SceneCall& call) {
        char& start = call.at(matchName);
        const std::string& found = call.stream(stream).matchName;
        const std::size_t length = found.copy(&start, AEGP_MAX_STREAM_MATCH_NAME_SIZE - 1);
        matchName[length] = '\0';
    });
}

A_Err getStreamIndexInParent(AEGP_StreamRefH stream, A_long* index) {
    return serve<AEGP_DynamicStreamSuite5>(
        "AEGP_GetStreamIndexInParent", [&](const SceneCall& call) {
            const Stream& found = call.stream(stream);
            const auto& siblings = parentOf(call, stream).children;
            const auto place = std::find_if(siblings.begin(), siblings.end(),
                                            [&](const auto& each) { return each.get() == &found; });
            call.at(index) = static_cast<A_long>(place - siblings.begin());
        });
}

A_Err isStreamModified(AEGP_StreamRefH stream, A_Boolean* isModified) {
    return serve<AEGP_DynamicStreamSuite5>("AEGP_IsStreamModified", [&](const SceneCall& call) {
        call.at(isModified) = call.stream(stream).isModified ? 1 : 0;
    });
}

} // namespace

const AEGP_DynamicStreamSuite5& dynamicStreamSuite() {
    static const AEGP_DynamicStreamSuite5 table = {
        getStreamGroupingType, getNumStreamsInGroup,   getDynamicStreamFlags,
        setDynamicStreamFlag,  getNewStreamRefByIndex, getNewStreamRefByMatchname,
        canAddStream,          setStreamName,          getNewParentStreamRef,
        getMatchName,          getStreamIndexInParent, isStreamModified,
    };
    return table;
}

} // namespace hostkit::tables
