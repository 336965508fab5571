// The keyframes of a stream.
#include "host/stream.h"

namespace AEO {

namespace {

using Keyframes = AEGP_KeyframeSuite4;

} // namespace

A_long Stream::numKeyframes() {
    return query(keyframes_, &Keyframes::AEGP_GetStreamNumKFs, stream_);
}

AEGP_StreamValue2 Stream::newKeyframeValue(A_long index) {
    return query(keyframes_, &Keyframes::AEGP_GetNewKeyframeValue, currentPluginId, stream_, index);
}

void Stream::setKeyframeValue(A_long index, const AEGP_StreamVal2& value) {
    const AEGP_StreamValue2 record = withHandle(value);
    call(keyframes_, &Keyframes::AEGP_SetKeyframeValue, stream_, index, &record);
}

A_Time Stream::keyframeTime(A_long index, AEGP_LTimeMode mode) {
    return query(keyframes_, &Keyframes::AEGP_GetKeyframeTime, stream_, index, mode);
}

A_long Stream::insertKeyframe(AEGP_LTimeMode mode, const A_Time& time) {
    return query(keyframes_, &Keyframes::AEGP_InsertKeyframe, stream_, mode, &time);
}

void Stream::deleteKeyframe(A_long index) {
    call(keyframes_, &Keyframes::AEGP_DeleteKeyframe, stream_, index);
}

AEGP_KeyframeFlags Stream::keyframeFlags(A_long index) {
    return query(keyframes_, &Keyframes::AEGP_GetKeyframeFlags, stream_, index);
}

void Stream::setKeyframeFlag(A_long index, AEGP_KeyframeFlags oneFlag, bool isSet) {
    call(keyframes_, &Keyframes::AEGP_SetKeyframeFlag, stream_, index, oneFlag, A_Boolean{isSet});
}

KeyframeInterpolation Stream::keyframeInterpolation(A_long index) {
    KeyframeInterpolation found;
    call(keyframes_, &Keyframes::AEGP_GetKeyframeInterpolation, stream_, index, &found.in,
         &found.out);
    return found;
}

void Stream::setKeyframeInterpolation(A_long index, KeyframeInterpolation interpolation) {
    call(keyframes_, &Keyframes::AEGP_SetKeyframeInterpolation, stream_, index, interpolation.in,
         interpolation.out);
}

AEGP_AddKeyframesInfoH Stream::startAddKeyframes() {
    return query(keyframes_, &Keyframes::AEGP_StartAddKeyframes, stream_);
}

A_long Stream::addKeyframe(AEGP_AddKeyframesInfoH batch, AEGP_LTimeMode mode, const A_Time& time) {
    return query(keyframes_, &Keyframes::AEGP_AddKeyframes, batch, mode, &time);
}

void Stream::setAddedKeyframe(AEGP_AddKeyframesInfoH batch, A_long index,
                              const AEGP_StreamVal2& value) {
    const AEGP_StreamValue2 record = withHandle(value);
    call(keyframes_, &Keyframes::AEGP_SetAddKeyframe, batch, index, &record);
}

void Stream::endAddKeyframes(AEGP_AddKeyframesInfoH batch, bool isAdded) {
    call(keyframes_, &Keyframes::AEGP_EndAddKeyframes, A_Boolean{isAdded}, batch);
}

} // namespace AEO
