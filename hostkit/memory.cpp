#include "hostkit/memory.h"

#include <cstdlib>
#include <memory>
#include <unordered_map>
#include <utility>

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
    std::vector<std::string> faults;
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
    memory().faults.push_back(std::string(call) + " of a handle that is not live");
    return nullptr;
}

PF_Handle newHandle(A_u_longlong size) {
    if (memory().left == 0)
        return nullptr;
    auto block = std::make_unique<Block>(size);
    if (block->address == nullptr && size != 0)
        return nullptr;
    if (memory().left != noLimit)
        --memory().left;
    ++memory().made;
    PF_Handle handle = &block->address;
    memory().blocks.emplace(handle, std::move(block));
    return handle;
}

void* lockHandle(PF_Handle handle) {
    Block* block = find(handle, "host_lock_handle");
    if (block == nullptr)
        return nullptr;
    ++block->locks;
    return block->address;
}

void unlockHandle(PF_Handle handle) {
    Block* block = find(handle, "host_unlock_handle");
    if (block != nullptr && --block->locks < 0)
        memory().faults.emplace_back("host_unlock_handle of a handle that is not locked");
}

void disposeHandle(PF_Handle handle) {
    if (find(handle, "host_dispose_handle") != nullptr)
        memory().blocks.erase(handle);
}

A_u_longlong handleSize(PF_Handle handle) {
    const Block* block = find(handle, "host_get_handle_size");
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

std::vector<std::string> takeFaults() {
    return std::exchange(memory().faults, {});
}

} // namespace hostkit::memory
