// Every call that a module makes into the host passes here first: it is counted, it can be made to
// fail, something else can be made to happen in the middle of it, and memory that is not locked
// moves.
//
// One count for the process, like the host's memory: the host's callbacks carry no context.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "sdk/pf_types.h"

namespace hostkit::calls {

// What a failed call answers unless told otherwise: a code that nothing else in the contract means.
inline constexpr PF_Err injectedError = 77;

// The first line of every function of the contract: 0, or the code with which the call must fail
// without doing anything. `name` is the contract's name and must live for ever.
PF_Err enter(const char* name);

// Calls since the last `restart`.
std::uint64_t count();

// Forgets the counts, the wish for a failure and the hook.
void restart();

// The n-th call from now on fails, counted from 1; with a name, the n-th call of that name.
void failAt(std::uint64_t n, PF_Err code = injectedError);
void failAt(const std::string& name, std::uint64_t n, PF_Err code = injectedError);

// The name of the call that was made to fail since the last `restart`; empty if none was.
std::string failedCall();

// Runs once, at the start of the next call of that name: a command that the host sends while
// another one runs.
void onNext(const std::string& name, std::function<void()> event);

} // namespace hostkit::calls
