// Hook at the start of every call from a module into the host: it counts the call, can make it
// fail, can run other code during it, and moves all unlocked memory.
//
// The state is global to the process, because the host's callbacks carry no context.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "sdk/pf_types.h"

namespace hostkit::calls {

// Error code of an injected failure by default: a value with no other meaning in the contract.
inline constexpr PF_Err injectedError = 77;

// Must be the first statement of every contract function. Returns 0, or the code with which the
// call must fail without doing anything. `name` is the contract's name of the function, a string
// with static storage.
PF_Err enter(const char* name);

// Number of calls since the last `reset`.
std::uint64_t count();

// Clears the count, the injected failure and the hooks.
void reset();

// Makes the n-th call from now fail, counted from 1; with a name, the n-th call of that name. 0
// cancels.
void failAt(std::uint64_t n, PF_Err code = injectedError);
void failAt(const std::string& name, std::uint64_t n, PF_Err code = injectedError);

// Name of the call that was made to fail since the last `reset`; empty if none was.
std::string failedCall();

// Runs `event` once, at the start of the next call of that name; for example a command that the
// host sends while another one is running.
void onNext(const std::string& name, std::function<void()> event);

} // namespace hostkit::calls
