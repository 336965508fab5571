// The records behind the opaque references of the scene suites: one record for each acquisition, so
// that the ledger can tell a released reference from a new one.
//
// Records of released references stay allocated until the next host is created, so that use after
// release is a fault instead of a crash.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostkit/effect/effect.h"
#include "hostkit/project/streams.h"

struct AEGP_StreamRef {
    std::weak_ptr<hostkit::Stream> stream;
    std::vector<hostkit::StreamValue> acquiredValues; // not yet disposed of
};

struct AEGP_EffectRef {
    std::weak_ptr<hostkit::Effect> effect;
};

// A batch of keyframes: all are added or none.
struct AEGP_AddKeyframesInfo {
    std::weak_ptr<hostkit::Stream> stream;
    std::vector<hostkit::Keyframe> pending; // in the order of the calls
};

namespace hostkit::references {

// New references, which the caller must release. `what` describes the stream in the ledger:
// "control 5", "marker of layer 1".
AEGP_StreamRefH newStreamRef(Stream& stream, const std::string& what);
AEGP_EffectRefH newEffectRef(Effect& effect);
AEGP_AddKeyframesInfoH newKeyframeBatch(Stream& stream);

// Fills the record with a value of the reference's stream and counts it as acquired. Markers are
// shared: they exist as long as a value refers to them. Outlines and text documents are copied.
void newStreamValue(AEGP_StreamRefH stream, const StreamValue& value, AEGP_StreamValue2& record);

// Releases the reference or value. Returns false and records a fault if it is not acquired; a null
// stream returns false without a fault. Releasing a stream with undisposed values is a fault, but
// releases it. A value's record is cleared, so that it cannot be released twice.
bool release(AEGP_StreamRefH stream, const char* call);
bool release(AEGP_EffectRefH effect, const char* call);
bool release(AEGP_AddKeyframesInfoH batch, const char* call);
bool release(AEGP_StreamValue2& record, const char* call);

// The object of a valid reference; otherwise null, and a fault is recorded.
Stream* find(AEGP_StreamRefH stream, const char* call);
Effect* find(AEGP_EffectRefH effect, const char* call);
AEGP_AddKeyframesInfo* find(AEGP_AddKeyframesInfoH batch, const char* call);

// The object in an acquired value; otherwise null, and a fault is recorded.
std::shared_ptr<Marker> find(AEGP_MarkerValP marker, const char* call);
std::shared_ptr<Outline> find(AEGP_MaskOutlineValH outline, const char* call);
std::shared_ptr<TextDocument> find(AEGP_TextDocumentH document, const char* call);

// Frees all records; the ledger must be reset first.
void reset();

} // namespace hostkit::references
