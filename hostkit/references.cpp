#include "hostkit/references.h"

#include <algorithm>
#include <utility>

#include "hostkit/ledger.h"

namespace hostkit::references {

namespace {

using ledger::Kind;

// Records are never freed before the host ends: an address that the ledger does not know as lent
// may be asked about, and none comes back as that of another loan.
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
    ledger::lend(kind, kept.back().get(), what);
    return kept.back().get();
}

// The object that a lent reference watches.
template<class T>
T* living(const std::weak_ptr<T>& watched, const char* call, const char* what) {
    if (const auto found = watched.lock())
        return found.get();
    ledger::fault(std::string(call) + ": " + what + " that is gone with its owner");
    return nullptr;
}

} // namespace

AEGP_StreamRefH lendStream(Stream& stream, const std::string& what) {
    return keep(records().streams, {stream.living.watch(), {}}, Kind::Stream, what);
}

AEGP_EffectRefH lendEffect(Effect& effect) {
    return keep(records().effects, {effect.living.watch()}, Kind::Effect, effect.title());
}

AEGP_AddKeyframesInfoH lendBatch(Stream& stream) {
    return keep(records().batches, {stream.living.watch(), {}}, Kind::KeyframeBatch,
                "keyframes of " + stream.matchName);
}

void lendValue(AEGP_StreamRefH stream, const StreamValue& value, AEGP_StreamValue2& record) {
    record.streamH = stream;
    record.val = value.value;
    StreamValue& lent = stream->valuesOut.emplace_back(value);
    if (lent.outline != nullptr)
        lent.outline = std::make_shared<Outline>(*lent.outline);
    if (lent.document != nullptr)
        lent.document = std::make_shared<TextDocument>(*lent.document);
    if (lent.object() != nullptr) // whatever it is: its address is all that the record holds
        record.val.markerP = static_cast<AEGP_MarkerValP>(const_cast<void*>(lent.object()));
    const auto living = stream->stream.lock();
    ledger::lend(Kind::StreamValue, stream, "value of " + (living ? living->matchName : "nothing"));
}

bool giveBack(AEGP_StreamRefH stream, const char* call) {
    if (stream == nullptr || !ledger::giveBack(Kind::Stream, stream, call))
        return false;
    if (stream->valuesOut.empty())
        return true;
    ledger::fault(std::string(call) + ": a stream of which a value is still out");
    return false;
}

bool giveBack(AEGP_EffectRefH effect, const char* call) {
    return ledger::giveBack(Kind::Effect, effect, call);
}

bool giveBack(AEGP_AddKeyframesInfoH batch, const char* call) {
    return ledger::giveBack(Kind::KeyframeBatch, batch, call);
}

bool giveBack(AEGP_StreamValue2& record, const char* call) {
    if (!ledger::giveBack(Kind::StreamValue, record.streamH, call))
        return false;
    std::vector<StreamValue>& out = record.streamH->valuesOut;
    const auto same = std::find_if(out.begin(), out.end(), [&](const StreamValue& value) {
        return value.object() == record.val.markerP;
    });
    out.erase(same == out.end() ? out.begin() : same);
    record = {};
    return true;
}

Stream* find(AEGP_StreamRefH stream, const char* call) {
    return ledger::requireLent(Kind::Stream, stream, call)
               ? living(stream->stream, call, "a stream")
               : nullptr;
}

Effect* find(AEGP_EffectRefH effect, const char* call) {
    return ledger::requireLent(Kind::Effect, effect, call)
               ? living(effect->effect, call, "an effect")
               : nullptr;
}

AEGP_AddKeyframesInfo* find(AEGP_AddKeyframesInfoH batch, const char* call) {
    return ledger::requireLent(Kind::KeyframeBatch, batch, call) ? batch : nullptr;
}

namespace {

template<class Object>
std::shared_ptr<Object> findOut(std::shared_ptr<Object> StreamValue::*member, const void* handle,
                                const char* call, const char* what) {
    if (handle != nullptr)
        for (const auto& record : records().streams)
            for (const StreamValue& value : record->valuesOut)
                if ((value.*member).get() == handle)
                    return value.*member;
    ledger::fault(std::string(call) + ": " + what + " of which no value is out");
    return nullptr;
}

} // namespace

std::shared_ptr<Marker> find(AEGP_MarkerValP marker, const char* call) {
    return findOut(&StreamValue::marker, marker, call, "a marker");
}

std::shared_ptr<Outline> find(AEGP_MaskOutlineValH outline, const char* call) {
    return findOut(&StreamValue::outline, outline, call, "an outline");
}

std::shared_ptr<TextDocument> find(AEGP_TextDocumentH document, const char* call) {
    return findOut(&StreamValue::document, document, call, "a text document");
}

void close() {
    records() = Records();
}

} // namespace hostkit::references
