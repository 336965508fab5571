// Owners of values that the host has checked out of a stream. Each is disposed of through its
// Stream, which must outlive it.
#pragma once

#include "host/memory.h"
#include "host/stream.h"

namespace AEO {

class StreamValue : public ObjectBase {
public:
    // Takes ownership of the record; a record without a stream is empty.
    StreamValue(Stream& stream, const AEGP_StreamValue2& record)
        : stream_(&stream), record_(record) {}
    ~StreamValue() override {
        if (record_.streamH != nullptr)
            stream_->disposeValue(record_);
    }

    const AEGP_StreamVal2& value() const { return record_.val; }

protected:
    SPBasicSuite* basic() const { return stream_->basic(); }

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

// A mask's outline at a time. It is a copy: a change takes effect when the value is set on a
// stream. Each call acquires the suite.
class MaskOutline : public StreamValue {
    using Suite = AEGP_MaskOutlineSuite3;
    using Holder = SuiteHolder<Suite, OnRefusal::UseTable>;

    template<class Function, class... Arguments>
    auto get(Function function, Arguments... arguments) {
        Holder holder(basic());
        return query(holder, function, value().mask, arguments...);
    }
    template<class Function, class... Arguments>
    void change(Function function, Arguments... arguments) {
        Holder holder(basic());
        call(holder, function, value().mask, arguments...);
    }

public:
    MaskOutline(Stream& stream, AEGP_LTimeMode mode, const A_Time& time)
        : StreamValue(stream, stream.newValue(mode, time)) {}

    bool isOpen() { return get(&Suite::AEGP_IsMaskOutlineOpen) != 0; }
    void setOpen(bool isOpen) { change(&Suite::AEGP_SetMaskOutlineOpen, A_Boolean{isOpen}); }
    // The number of vertices if the outline is closed, one less if it is open.
    A_long numSegments() { return get(&Suite::AEGP_GetMaskOutlineNumSegments); }
    AEGP_MaskVertex vertex(A_long index) {
        return get(&Suite::AEGP_GetMaskOutlineVertexInfo, index);
    }
    void setVertex(A_long index, const AEGP_MaskVertex& vertex) {
        change(&Suite::AEGP_SetMaskOutlineVertexInfo, index, &vertex);
    }
    void createVertex(A_long index) { change(&Suite::AEGP_CreateVertex, index); }
    void deleteVertex(A_long index) { change(&Suite::AEGP_DeleteVertex, index); }
};

// The text of a text layer at a time; also a copy.
class TextDocument : public StreamValue {
public:
    TextDocument(Stream& stream, AEGP_LTimeMode mode, const A_Time& time)
        : StreamValue(stream, stream.newValue(mode, time)) {}

    WideString text() {
        Holder holder(basic());
        return readWideText(basic(), query(holder, &AEGP_TextDocumentSuite1::AEGP_GetNewText,
                                           currentPluginId, value().text_document));
    }
    void setText(const WideString& text) {
        Holder holder(basic());
        call(holder, &AEGP_TextDocumentSuite1::AEGP_SetText, value().text_document, text.c_str(),
             static_cast<A_long>(text.size()));
    }

private:
    using Holder = SuiteHolder<AEGP_TextDocumentSuite1, OnRefusal::UseTable>;
};

} // namespace AEO
