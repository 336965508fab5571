#include "host/stream.h"

#include <array>

#include "host/marker.h"
#include "host/memory.h"
#include "support/utf.h"

namespace AEO {

namespace {

using Streams = AEGP_StreamSuite9;
using Dynamics = AEGP_DynamicStreamSuite5;

static_assert(sizeof(AEGP_StreamVal2) == 32, "the size of a value of any type");

} // namespace

void Stream::setValue(const AEGP_StreamVal2& value) {
    AEGP_StreamValue2 record = withHandle(value);
    call(streams_, &Streams::AEGP_SetStreamValue, currentPluginId, stream_, &record);
}

void Stream::setValue(double value) {
    AEGP_StreamVal2 whole = AEGP_StreamVal2();
    whole.one_d = value;
    setValue(whole);
}

void Stream::setValue(double x, double y, double z) {
    AEGP_StreamVal2 whole = AEGP_StreamVal2();
    whole.three_d = {x, y, z};
    setValue(whole);
}

void Stream::setValue(const StreamValue& value) {
    setValue(value.value());
}

AEGP_StreamValue2 Stream::newValue(AEGP_LTimeMode mode, const A_Time& time,
                                   bool isBeforeExpression) {
    return query(streams_, &Streams::AEGP_GetNewStreamValue, currentPluginId, stream_, mode, &time,
                 A_Boolean{isBeforeExpression});
}

void Stream::disposeValue(AEGP_StreamValue2& value) noexcept {
    dispose(streams_, &Streams::AEGP_DisposeStreamValue, &value);
}

WideString Stream::name(bool isEnglishForced) {
    return readWideText(basic(), query(streams_, &Streams::AEGP_GetStreamName, currentPluginId,
                                       stream_, A_Boolean{isEnglishForced}));
}

AEGP_StreamType Stream::type() {
    return query(streams_, &Streams::AEGP_GetStreamType, stream_);
}

bool Stream::isExpressionEnabled() {
    return query(streams_, &Streams::AEGP_GetExpressionState, currentPluginId, stream_) != 0;
}

void Stream::setExpressionEnabled(bool isEnabled) {
    call(streams_, &Streams::AEGP_SetExpressionState, currentPluginId, stream_,
         A_Boolean{isEnabled});
}

WideString Stream::expression() {
    return readWideText(basic(),
                        query(streams_, &Streams::AEGP_GetExpression, currentPluginId, stream_));
}

NarrowString Stream::narrowExpression() {
    return toNarrow(expression());
}

void Stream::setExpression(const A_UTF16Char* text) {
    call(streams_, &Streams::AEGP_SetExpression, currentPluginId, stream_, text);
}

void Stream::setDynamicFlag(AEGP_DynStreamFlag oneFlag, bool isUndoable, bool isSet) {
    call(dynamics_, &Dynamics::AEGP_SetDynamicStreamFlag, stream_, oneFlag, A_Boolean{isUndoable},
         A_Boolean{isSet});
}

AEGP_DynStreamFlag Stream::dynamicFlags() {
    return query(dynamics_, &Dynamics::AEGP_GetDynamicStreamFlags, stream_);
}

void Stream::setName(const A_UTF16Char* name) {
    call(dynamics_, &Dynamics::AEGP_SetStreamName, stream_, name);
}

AEGP_StreamRefH Stream::newParent() {
    return query(dynamics_, &Dynamics::AEGP_GetNewParentStreamRef, currentPluginId, stream_);
}

AEGP_StreamGroupingType Stream::groupingType() {
    return query(dynamics_, &Dynamics::AEGP_GetStreamGroupingType, stream_);
}

A_long Stream::numInGroup() {
    return query(dynamics_, &Dynamics::AEGP_GetNumStreamsInGroup, stream_);
}

AEGP_StreamRefH Stream::newChild(A_long index) {
    return query(dynamics_, &Dynamics::AEGP_GetNewStreamRefByIndex, currentPluginId, stream_,
                 index);
}

AEGP_StreamRefH Stream::newChild(const char* matchName) {
    return query(dynamics_, &Dynamics::AEGP_GetNewStreamRefByMatchname, currentPluginId, stream_,
                 matchName);
}

bool Stream::canAdd(const char* matchName) {
    return query(dynamics_, &Dynamics::AEGP_CanAddStream, stream_, matchName) != 0;
}

NarrowString Stream::matchName() {
    std::array<char, AEGP_MAX_STREAM_MATCH_NAME_SIZE> text{};
    call(dynamics_, &Dynamics::AEGP_GetMatchName, stream_, text.data());
    text.back() = 0;
    return text.data();
}

A_long Stream::indexInParent() {
    return query(dynamics_, &Dynamics::AEGP_GetStreamIndexInParent, stream_);
}

bool Stream::isModified() {
    return query(dynamics_, &Dynamics::AEGP_IsStreamModified, stream_) != 0;
}

} // namespace AEO
