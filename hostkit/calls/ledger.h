// Records everything that a module has acquired from the host and not yet released: suites,
// references, stream values, checkouts, undo groups. Releasing what is not acquired, and use after
// release, are faults: sentences that name the call and the object. A fault never ends the process.
//
// There is one ledger for the process.
#pragma once

#include <string>
#include <vector>

namespace hostkit::ledger {

enum class Kind {
    Suite, // key: name and version
    Memory,
    Stream,
    Effect,
    StreamValue,
    Parameter,
    KeyframeBatch,
    UndoGroup,
    Mask,
};

// `key` identifies the object within its kind; the same key may be acquired several times. `what`
// describes it in faults ("stream of control 5").
void acquire(Kind kind, const void* key, const std::string& what);

// Returns false and records a fault if no such object is acquired. `call` is the contract's name of
// the calling function.
bool release(Kind kind, const void* key, const char* call);

// Returns whether the object is acquired; if it is not, records a fault of the call.
bool requireAcquired(Kind kind, const void* key, const char* call);

// Descriptions of what is acquired now, in the order of acquisition. Handles of the host's heap are
// counted elsewhere (memory.h).
std::vector<std::string> outstanding();

void fault(const std::string& sentence);

// Returns and clears the faults recorded since the last call.
std::vector<std::string> takeFaults();

// Forgets all acquisitions and faults.
void reset();

} // namespace hostkit::ledger
