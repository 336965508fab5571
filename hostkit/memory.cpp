#include "hostkit/memory.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>

#include "hostkit/calls.h"
#include "hostkit/ledger.h"

namespace hostkit::memory {

namespace {

// What a handle points to: the address of the block comes first, as the contract has it.
struct Block {
    void* address = nullptr;
    A_u_longlong size = 0;
    int locks = 0;

    explicit Block(A_u_longlong bytes) : address(std::malloc(bytes)), size(bytes) {}
    ~Block() { std::free(address); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
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

PF_Handle make(A_u_longlong size) {
    try {
        auto block = std::make_unique<Block>(size);
        if (block->address == nullptr && size != 0)
            return nullptr;
        PF_Handle handle = &block->address;
        memory().blocks.emplace(handle, std::move(block));
        ++memory().made;
        return handle;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

PF_Handle newHandle(A_u_longlong size) {
    if (calls::enter("host_new_handle") != 0 || memory().left == 0)
        return nullptr;
    PF_Handle handle = make(size);
    if (handle != nullptr && memory().left != noLimit)
        --memory().left;
    return handle;
}

void* lockHandle(PF_Handle handle) {
    constexpr const char* call = "host_lock_handle";
    if (calls::enter(call) != 0)
        return nullptr;
    Block* block = find(handle, call);
    if (block == nullptr)
        return nullptr;
    ++block->locks;
    return block->address;
}

// This one and the next have no answer that could say a failure: they are only counted.
void unlockHandle(PF_Handle handle) {
    constexpr const char* call = "host_unlock_handle";
    calls::enter(call);
    Block* block = find(handle, call);
    if (block == nullptr)
        return;
    if (block->locks == 0)
        ledger::fault(std::string(call) + ": a handle that is not locked");
    else
        --block->locks;
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
    return block == nullptr ? 0 : block->size;
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

std::uint64_t handlesMade() {
    return memory().made;
}

void setHandlesLeft(std::uint64_t count) {
    memory().left = count;
}

PF_Handle store(const std::vector<std::byte>& bytes) {
    PF_Handle handle = make(bytes.size());
    if (handle != nullptr)
        std::ranges::copy(bytes, static_cast<std::byte*>(*handle));
    return handle;
}

std::vector<std::byte> contents(PF_Handle handle) {
    const Block* block = find(handle, "the host, reading a handle");
    if (block == nullptr)
        return {};
    const auto* start = static_cast<const std::byte*>(block->address);
    return {start, start + block->size};
}

void drop(PF_Handle handle) {
    if (find(handle, "host_dispose_handle") != nullptr)
        memory().blocks.erase(handle);
}

void restart() {
    memory().blocks.clear();
    memory().left = noLimit;
}

} // namespace hostkit::memory
