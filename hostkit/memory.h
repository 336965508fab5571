// The substitute host's memory: handles, counted and checked.
//
// The host's callbacks carry no context, so there is one memory for the process. Every misuse of a
// handle (one that is not live, an unlock too many) is kept as a fault for the owner of the
// host to look at; it never crashes the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
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

// What was done wrong since the last call, a sentence each; empties the list.
std::vector<std::string> takeFaults();

} // namespace hostkit::memory
