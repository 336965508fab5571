// Everything that a module has acquired from the host: references, stream values, checkouts,
// suites, groups. Releasing what was not acquired and use after release are faults: sentences that
// name the call and the thing. A fault never ends the process.
//
// One ledger for the process, like the host's memory.
#pragma once

#include <string>
#include <vector>

namespace hostkit::ledger {

enum class Kind {
    Suite, // name and version
    Memory,
    Stream,
    Effect,
    StreamValue,
    Parameter,
    KeyframeBatch,
    UndoGroup,
    Mask,
};

// `key` identifies the thing within its kind; the same key may be acquired several times. `what`
// describes it ("stream of control 5").
void acquire(Kind kind, const void* key, const std::string& what);

// False, with a fault, when no such thing is acquired. `call` is the contract's name of the call.
bool release(Kind kind, const void* key, const char* call);

// Whether the thing is acquired; if not, that is a fault of the call.
bool requireAcquired(Kind kind, const void* key, const char* call);

// Descriptions of what is acquired at the moment, in the order of acquisition. Handles of the
// host's heap are not among them (see memory.h).
std::vector<std::string> outstanding();

void fault(const std::string& sentence);

// The faults since the last call; empties the list.
std::vector<std::string> takeFaults();

// Forgets all acquisitions and faults, when a host ends.
void close();

} // namespace hostkit::ledger
