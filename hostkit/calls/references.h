// What the opaque references of the scene suites point at: one record for each acquisition, so that
// the ledger can tell a released reference from a new one.
//
// A record stays allocated when it is given back (marked as dead), so that a use after its end is a
// fault and no crash; all go with the host.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostkit/effect/effect.h"
#include "hostkit/project/streams.h"

struct AEGP_StreamRef {
    std::weak_ptr<hostkit::Stream> stream;
    std::vector<hostkit::StreamValue> valuesOut; // acquired through this reference
};

struct AEGP_EffectRef {
    std::weak_ptr<hostkit::Effect> effect;
};

// Keyframes that are added together or not at all.
struct AEGP_AddKeyframesInfo {
    std::weak_ptr<hostkit::Stream> stream;
    std::vector<hostkit::Keyframe> pending; // in the order of the calls
};

namespace hostkit::references {

// New references, which the caller releases. `what` is for the ledger: "control 5", "marker of
// layer 1".
AEGP_StreamRefH newStreamRef(Stream& stream, const std::string& what);
AEGP_EffectRefH newEffectRef(Effect& effect);
AEGP_AddKeyframesInfoH newKeyframeBatch(Stream& stream);

// Fills the record with a value of the reference's stream. Values are counted for each reference;
// a marker stays alive as long as a value with it is out. Outlines and text documents are lent as
// copies.
void newStreamValue(AEGP_StreamRefH stream, const StreamValue& value, AEGP_StreamValue2& record);

// Gives the reference back; false, with a fault, when it is not lent. A null stream is no fault: it
// answers false. A stream of which a value is still out is a fault, too, but is taken back. A
// value's record is cleared, so that it cannot be given back again.
bool release(AEGP_StreamRefH stream, const char* call);
bool release(AEGP_EffectRefH effect, const char* call);
bool release(AEGP_AddKeyframesInfoH batch, const char* call);
bool release(AEGP_StreamValue2& record, const char* call);

// The object of a valid reference; null, with a fault, for any other.
Stream* find(AEGP_StreamRefH stream, const char* call);
Effect* find(AEGP_EffectRefH effect, const char* call);
AEGP_AddKeyframesInfo* find(AEGP_AddKeyframesInfoH batch, const char* call);

// What a value that is out holds; null, with a fault, for anything else.
std::shared_ptr<Marker> find(AEGP_MarkerValP marker, const char* call);
std::shared_ptr<Outline> find(AEGP_MaskOutlineValH outline, const char* call);
std::shared_ptr<TextDocument> find(AEGP_TextDocumentH document, const char* call);

// Frees all records; the ledger must be closed first.
void close();

} // namespace hostkit::references
