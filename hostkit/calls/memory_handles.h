// The contract's memory handles: blocks in which the host returns texts. The caller frees them.
//
// The record of a freed handle stays, without its bytes, so that a use after the free is a fault
// and no crash. All records are freed when the host ends.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/services/movable_block.h"
#include "sdk/aegp_types.h"

struct AEGP_Mem {
    void* address = nullptr;
    std::unique_ptr<hostkit::MovableBlock> block; // null once the handle is free
};

namespace hostkit {

// A new handle with a copy of the text and its final zero; the caller owns it.
AEGP_MemHandle newTextHandle(std::string_view text);
AEGP_MemHandle newTextHandle(std::u16string_view text);

// A new handle with these bytes; `what` is for the ledger.
AEGP_MemHandle newMemoryHandle(std::vector<std::byte> bytes, const std::string& what);

// The record of a valid handle; null, with a fault of the call, for any other.
AEGP_Mem* findMemory(AEGP_MemHandle memory, const char* call);

// Frees all records; the ledger must be closed at the same time.
void dropMemoryHandles();

} // namespace hostkit
