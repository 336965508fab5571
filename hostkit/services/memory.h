// The substitute host's memory handles, counted and checked.
//
// The state is global to the process, because the host's callbacks carry no context. Every misuse
// of a handle (a handle that is not live, an unlock without a lock) is a fault in the ledger and
// never crashes the process. Unlocked handles move (movable_block.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sdk/pf_types.h"

namespace hostkit::memory {

// The callbacks for PF_InData::utils.
PF_UtilCallbacks& callbacks();

// Number of handles that were allocated and not disposed of.
std::size_t liveHandles();

// Number of handles allocated since the process started.
std::uint64_t handlesAllocated();

// Allows `count` more allocations; further ones return null, until called again with `noLimit`.
inline constexpr std::uint64_t noLimit = UINT64_MAX;
void setHandlesLeft(std::uint64_t count);

// Allocation by the host itself: not counted as a call, and not limited.
PF_Handle store(const std::vector<std::byte>& bytes);
std::vector<std::byte> contents(PF_Handle handle); // a dead handle: empty, and a fault
void drop(PF_Handle handle);

// Frees every live handle and removes the limit.
void reset();

} // namespace hostkit::memory
