// The contract's memory handles: blocks in which the host gives back texts. Lent until freed.
//
// The record of a handle stays when the handle is freed, without its bytes, so that a use after its
// end is a fault and no crash; all records go with the host.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/movable_block.h"
#include "sdk/aegp_types.h"

struct AEGP_Mem {
    void* address = nullptr;
    std::unique_ptr<hostkit::MovableBlock> block; // null once the handle is free
};

namespace hostkit {

// A new handle with a copy of the text and its final zero; lent to the caller.
AEGP_MemHandle lendText(std::string_view text);
AEGP_MemHandle lendText(std::u16string_view text);

// A new handle with these bytes; `what` is for the ledger.
AEGP_MemHandle lendMemory(std::vector<std::byte> bytes, const std::string& what);

// The record of a lent handle; null, with a fault of the call, for any other.
AEGP_Mem* findMemory(AEGP_MemHandle memory, const char* call);

// Drops all records; whatever is still lent must be forgotten by the ledger at the same time.
void dropMemoryHandles();

} // namespace hostkit
