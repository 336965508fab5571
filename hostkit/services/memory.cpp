#include "hostkit/services/memory.h"

#include <exception>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/services/movable_block.h"

namespace hostkit::memory {

namespace {

// What a handle points to. The contract requires the block's address as the first member.
struct Block {
    void* address = nullptr;
    MovableBlock block;

    explicit Block(std::vector<std::byte> bytes) : block(std::move(bytes), &address) {}
};

struct Memory {
    std::unordered_map<PF_Handle, std::unique_ptr<Block>> blocks;
    std::uint64_t made = 0;
    std::uint64_t left = noLimit;
};

Memory& memory() {
    static Memory instance;
    return instance;
}

Block* find(PF_Handle handle, const char* call) {
    const auto found = memory().blocks.find(handle);
    if (found != memory().blocks.end())
        return found->second.get();
    ledger::fault(std::string(call) + ": a handle that is not live");
    return nullptr;
}

PF_Handle make(std::vector<std::byte> bytes) {
    auto block = std::make_unique<Block>(std::move(bytes));
    PF_Handle handle = &block->address;
    memory().blocks.emplace(handle, std::move(block));
    ++memory().made;
    return handle;
}

PF_Handle newHandle(A_u_longlong size) {
    if (calls::enter("host_new_handle") != 0 || memory().left == 0)
        return nullptr;
    try {
        PF_Handle handle = make(std::vector<std::byte>(size, leftoverByte));
        if (memory().left != noLimit)
            --memory().left;
        return handle;
    } catch (const std::exception&) { // out of memory, or larger than a vector can be
        return nullptr;
    }
}

void* lockHandle(PF_Handle handle) {
    constexpr const char* call = "host_lock_handle";
    if (calls::enter(call) != 0)
        return nullptr;
    Block* block = find(handle, call);
    if (block == nullptr)
        return nullptr;
    block->block.lock();
    return block->address;
}

// unlock and dispose return nothing, so an injected failure only counts the call.
void unlockHandle(PF_Handle handle) {
    constexpr const char* call = "host_unlock_handle";
    calls::enter(call);
    Block* block = find(handle, call);
    if (block == nullptr)
        return;
    if (!block->block.unlock())
        ledger::fault(std::string(call) + ": a handle that is not locked");
}

void disposeHandle(PF_Handle handle) {
    calls::enter("host_dispose_handle");
    drop(handle);
}

A_u_longlong handleSize(PF_Handle handle) {
    constexpr const char* call = "host_get_handle_size";
    if (calls::enter(call) != 0)
        return 0;
    const Block* block = find(handle, call);
    return block == nullptr ? 0 : block->block.size();
}

} // namespace

PF_UtilCallbacks& callbacks() {
    static PF_UtilCallbacks table = {newHandle, lockHandle, unlockHandle, disposeHandle,
                                     handleSize};
    return table;
}

std::size_t liveHandles() {
    return memory().blocks.size();
}

std::uint64_t handlesAllocated() {
    return memory().made;
}

void setHandlesLeft(std::uint64_t count) {
    memory().left = count;
}

PF_Handle store(const std::vector<std::byte>& bytes) {
    return make(bytes);
}

std::vector<std::byte> contents(PF_Handle handle) {
    const Block* block = find(handle, "the host, reading a handle");
    if (block == nullptr)
        return {};
    return {block->block.data(), block->block.data() + block->block.size()};
}

void drop(PF_Handle handle) {
    if (find(handle, "host_dispose_handle") != nullptr)
        memory().blocks.erase(handle);
}

void reset() {
    memory().blocks.clear();
    memory().left = noLimit;
}

} // namespace hostkit::memory
