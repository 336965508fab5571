// Values that the host has lent out of a stream. Each goes back through the Stream that it came
// from, which must outlive it.
#pragma once

#include "host/stream.h"

namespace AEO {

class StreamValue : public ObjectBase {
public:
    // Takes over the record; one without a stream holds nothing.
    StreamValue(Stream& stream, const AEGP_StreamValue2& record)
        : stream_(&stream), record_(record) {}
    ~StreamValue() override {
        if (record_.streamH != nullptr)
            stream_->disposeValue(record_);
    }

    const AEGP_StreamVal2& value() const { return record_.val; }

private:
    Stream* stream_;
    AEGP_StreamValue2 record_;
};

// One keyframe of a marker stream.
class Marker : public StreamValue {
public:
    Marker(Stream& stream, A_long keyframeIndex)
        : StreamValue(stream, stream.newKeyframeValue(keyframeIndex)), markers_(stream.basic()) {}

    // A new handle of UTF-16 text, to be owned by a Memory.
    AEGP_MemHandle newString(AEGP_MarkerStringType kind) {
        return query(markers_, &AEGP_MarkerSuite2::AEGP_GetMarkerString, currentPluginId,
                     value().markerP, kind);
    }

private:
    SuiteHolder<AEGP_MarkerSuite2> markers_;
};

} // namespace AEO
