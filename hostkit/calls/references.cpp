#include "hostkit/calls/references.h"

#include <algorithm>
#include <utility>

#include "hostkit/calls/ledger.h"

namespace hostkit::references {

namespace {

using ledger::Kind;

// Records are kept until the next host is created, so the address of a released reference is never
// reused.
struct Records {
    std::vector<std::unique_ptr<AEGP_StreamRef>> streams;
    std::vector<std::unique_ptr<AEGP_EffectRef>> effects;
    std::vector<std::unique_ptr<AEGP_AddKeyframesInfo>> batches;
};

Records& records() {
    static Records instance;
    return instance;
}

template<class Record>
Record* keep(std::vector<std::unique_ptr<Record>>& kept, Record record, Kind kind,
             const std::string& what) {
    kept.push_back(std::make_unique<Record>(std::move(record)));
    ledger::acquire(kind, kept.back().get(), what);
    return kept.back().get();
}

// The object to which a valid reference refers; null, with a fault, if it no longer exists.
template<class T>
T* liveObject(const std::weak_ptr<T>& watched, const char* call, const char* what) {
    if (const auto found = watched.lock())
        return found.get();
    ledger::fault(std::string(call) + ": " + what + " whose owner was deleted");
    return nullptr;
}

} // namespace

AEGP_StreamRefH newStreamRef(Stream& stream, const std::string& what) {
    return keep(records().streams, {stream.live.watch(), {}}, Kind::Stream, what);
}

AEGP_EffectRefH newEffectRef(Effect& effect) {
    return keep(records().effects, {effect.live.watch()}, Kind::Effect, effect.title());
}

AEGP_AddKeyframesInfoH newKeyframeBatch(Stream& stream) {
    return keep(records().batches, {stream.live.watch(), {}}, Kind::KeyframeBatch,
                "keyframes of " + stream.matchName);
}

void newStreamValue(AEGP_StreamRefH stream, const StreamValue& value, AEGP_StreamValue2& record) {
    record.streamH = stream;
    record.val = value.value;
    StreamValue& copy = stream->acquiredValues.emplace_back(value);
    if (copy.outline != nullptr)
        copy.outline = std::make_shared<Outline>(*copy.outline);
    if (copy.document != nullptr)
        copy.document = std::make_shared<TextDocument>(*copy.document);
    if (copy.object() != nullptr) // the record holds only the object's address, for every type
        record.val.markerP = static_cast<AEGP_MarkerValP>(const_cast<void*>(copy.object()));
    const auto live = stream->stream.lock();
    ledger::acquire(Kind::StreamValue, stream, "value of " + (live ? live->matchName : "nothing"));
}

bool release(AEGP_StreamRefH stream, const char* call) {
    if (stream == nullptr || !ledger::release(Kind::Stream, stream, call))
        return false;
    if (stream->acquiredValues.empty())
        return true;
    ledger::fault(std::string(call) + ": a stream with a value that is not disposed of");
    return false;
}

bool release(AEGP_EffectRefH effect, const char* call) {
    return ledger::release(Kind::Effect, effect, call);
}

bool release(AEGP_AddKeyframesInfoH batch, const char* call) {
    return ledger::release(Kind::KeyframeBatch, batch, call);
}

bool release(AEGP_StreamValue2& record, const char* call) {
    if (!ledger::release(Kind::StreamValue, record.streamH, call))
        return false;
    std::vector<StreamValue>& out = record.streamH->acquiredValues;
    const auto same = std::find_if(out.begin(), out.end(), [&](const StreamValue& value) {
        return value.object() == record.val.markerP;
    });
    out.erase(same == out.end() ? out.begin() : same);
    record = {};
    return true;
}

Stream* find(AEGP_StreamRefH stream, const char* call) {
    return ledger::requireAcquired(Kind::Stream, stream, call)
               ? liveObject(stream->stream, call, "a stream")
               : nullptr;
}

Effect* find(AEGP_EffectRefH effect, const char* call) {
    return ledger::requireAcquired(Kind::Effect, effect, call)
               ? liveObject(effect->effect, call, "an effect")
               : nullptr;
}

AEGP_AddKeyframesInfo* find(AEGP_AddKeyframesInfoH batch, const char* call) {
    return ledger::requireAcquired(Kind::KeyframeBatch, batch, call) ? batch : nullptr;
}

namespace {

template<class Object>
std::shared_ptr<Object> findAcquired(std::shared_ptr<Object> StreamValue::*member,
                                     const void* handle, const char* call, const char* what) {
    if (handle != nullptr)
        for (const auto& record : records().streams)
            for (const StreamValue& value : record->acquiredValues)
                if ((value.*member).get() == handle)
                    return value.*member;
    ledger::fault(std::string(call) + ": " + what + " that is not in an acquired value");
    return nullptr;
}

} // namespace

std::shared_ptr<Marker> find(AEGP_MarkerValP marker, const char* call) {
    return findAcquired(&StreamValue::marker, marker, call, "a marker");
}

std::shared_ptr<Outline> find(AEGP_MaskOutlineValH outline, const char* call) {
    return findAcquired(&StreamValue::outline, outline, call, "an outline");
}

std::shared_ptr<TextDocument> find(AEGP_TextDocumentH document, const char* call) {
    return findAcquired(&StreamValue::document, document, call, "a text document");
}

void reset() {
    records() = Records();
}

} // namespace hostkit::references
