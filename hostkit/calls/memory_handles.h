// The contract's memory handles: blocks in which the host returns texts; the caller frees them.
//
// The record of a freed handle is kept without its bytes until the next host is created, so that
// use after free is a fault instead of a crash.
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
    std::unique_ptr<hostkit::MovableBlock> block; // null once the handle is freed
};

namespace hostkit {

// A new handle with a copy of the text and a terminating zero; the caller owns it.
AEGP_MemHandle newTextHandle(std::string_view text);
AEGP_MemHandle newTextHandle(std::u16string_view text);

// A new handle with these bytes; `what` describes it in the ledger.
AEGP_MemHandle newMemoryHandle(std::vector<std::byte> bytes, const std::string& what);

// The record of a valid handle; otherwise null, and a fault is recorded.
AEGP_Mem* findMemory(AEGP_MemHandle memory, const char* call);

// Frees all records; the ledger must be reset at the same time.
void resetMemoryHandles();

} // namespace hostkit
