// Owns a reference to a stream (one animated value of the scene, or a group of such values) and
// disposes of it.
//
// Keyframes count from 0 in the order of their times. Times are of the layer or of the composition,
// as the mode says. The caller owns new references and values: a reference is for a Stream to own,
// a value for a StreamValue.
#pragma once

#include "host/object_base.h"
#include "sdk/aegp_suites.h"
#include "support/text.h"

namespace AEO {

class StreamValue;

struct KeyframeInterpolation {
    AEGP_KeyframeInterpolationType in = 0;
    AEGP_KeyframeInterpolationType out = 0;
};

class Stream : public ObjectBase {
public:
    // Takes over the reference, which may be null.
    Stream(SPBasicSuite* basic, AEGP_StreamRefH stream)
        : stream_(stream), streams_(basic), keyframes_(basic), dynamics_(basic) {}
    // Passes a null reference to the host too, which rejects it.
    ~Stream() override { dispose(streams_, &AEGP_StreamSuite9::AEGP_DisposeStream, stream_); }

    SPBasicSuite* basic() const { return streams_.basic(); }

    // The stream's type decides which member of the value is used.
    void setValue(const AEGP_StreamVal2& value);
    void setValue(double value);
    void setValue(double x, double y, double z);
    void setValue(const StreamValue& value);
    AEGP_StreamValue2 newValue(AEGP_LTimeMode mode, const A_Time& time,
                               bool isBeforeExpression = false);
    void disposeValue(AEGP_StreamValue2& value) noexcept;

    WideString name(bool isEnglishForced = false);
    AEGP_StreamType type();
    bool isExpressionEnabled();
    void setExpressionEnabled(bool isEnabled);
    WideString expression();
    NarrowString narrowExpression(); // UTF-8
    void setExpression(const A_UTF16Char* text);

    A_long numKeyframes();
    AEGP_StreamValue2 newKeyframeValue(A_long index);
    void setKeyframeValue(A_long index, const AEGP_StreamVal2& value);
    A_Time keyframeTime(A_long index, AEGP_LTimeMode mode);
    A_long insertKeyframe(AEGP_LTimeMode mode, const A_Time& time); // its index
    void deleteKeyframe(A_long index);
    AEGP_KeyframeFlags keyframeFlags(A_long index);
    void setKeyframeFlag(A_long index, AEGP_KeyframeFlags oneFlag, bool isSet);
    KeyframeInterpolation keyframeInterpolation(A_long index);
    void setKeyframeInterpolation(A_long index, KeyframeInterpolation interpolation);

    // A batch of keyframes: indices are those of the batch; ending it without `isAdded` discards
    // it.
    AEGP_AddKeyframesInfoH startAddKeyframes();
    A_long addKeyframe(AEGP_AddKeyframesInfoH batch, AEGP_LTimeMode mode, const A_Time& time);
    void setAddedKeyframe(AEGP_AddKeyframesInfoH batch, A_long index, const AEGP_StreamVal2& value);
    void endAddKeyframes(AEGP_AddKeyframesInfoH batch, bool isAdded);

    void setDynamicFlag(AEGP_DynStreamFlag oneFlag, bool isUndoable, bool isSet);
    AEGP_DynStreamFlag dynamicFlags();
    void setName(const A_UTF16Char* name);
    AEGP_StreamRefH newParent();
    AEGP_StreamGroupingType groupingType();
    A_long numInGroup();
    AEGP_StreamRefH newChild(A_long index);
    AEGP_StreamRefH newChild(const char* matchName);
    bool canAdd(const char* matchName);
    NarrowString matchName();
    A_long indexInParent();
    bool isModified();

private:
    AEGP_StreamValue2 withHandle(const AEGP_StreamVal2& value) const { return {stream_, value}; }

    AEGP_StreamRefH stream_;
    SuiteHolder<AEGP_StreamSuite9, OnRefusal::UseTable> streams_;
    SuiteHolder<AEGP_KeyframeSuite4, OnRefusal::UseTable> keyframes_;
    SuiteHolder<AEGP_DynamicStreamSuite5, OnRefusal::UseTable> dynamics_;
};

} // namespace AEO
