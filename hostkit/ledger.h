// The book of what the host has lent: references, stream values, checkouts, suites, groups. It
// knows what is out, and keeps as a fault, in a sentence that names the call and the thing,
// whatever is given back that was not lent, or used after its end. It never ends the process.
//
// One book for the process, like the host's memory.
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

// `key` names the thing within its kind; the same key may be lent several times. `what` says in
// words what it is ("stream of control 5").
void lend(Kind kind, const void* key, const std::string& what);

// False, with a fault, when no such thing is lent. `call` is the contract's name of the call.
bool giveBack(Kind kind, const void* key, const char* call);

// Whether the thing is lent; if not, that is a fault of the call.
bool requireLent(Kind kind, const void* key, const char* call);

// What is out at the moment, a few words each; handles of the host's heap are not in this book (see
// memory.h).
std::vector<std::string> outstanding();

void fault(const std::string& sentence);

// What was done wrong since the last call; empties the list.
std::vector<std::string> takeFaults();

// Forgets all that is lent and every fault: a host that ends takes its book along.
void close();

} // namespace hostkit::ledger
