// The substitute host's memory: handles, counted and checked.
//
// The host's callbacks carry no context, so there is one memory for the process. Every misuse of a
// handle (one that is not live, an unlock too many) is a fault in the ledger; it never crashes the
// process. A handle that is not locked moves (movable_block.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sdk/pf_types.h"

namespace hostkit::memory {

// The callbacks for PF_InData::utils.
PF_UtilCallbacks& callbacks();

// Handles that were given out and not disposed of.
std::size_t liveHandles();

// Handles given out since the process started.
std::uint64_t handlesMade();

// From now on that many handles are given out, then null, until called again with `noLimit`.
inline constexpr std::uint64_t noLimit = UINT64_MAX;
void setHandlesLeft(std::uint64_t count);

// What the host does with handles on its own account: no calls, and no limit.
PF_Handle store(const std::vector<std::byte>& bytes);
std::vector<std::byte> contents(PF_Handle handle); // of one that is not live: nothing, and a fault
void drop(PF_Handle handle);

// Frees every handle that is still live, and lifts the limit: a new host.
void restart();

} // namespace hostkit::memory
