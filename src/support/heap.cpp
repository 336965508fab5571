#include "support/heap.h"

#include "command/command_scope.h"

namespace {

constexpr std::size_t wordSize = sizeof(void*);

} // namespace

void* allocate(std::size_t size) {
    const PF_InData* inData = currentInData();
    if (inData == nullptr || size > SIZE_MAX - wordSize)
        return nullptr;
    PF_Handle handle = inData->utils->host_new_handle(size + wordSize);
    if (handle == nullptr)
        return nullptr;
    auto* block = static_cast<PF_Handle*>(inData->utils->host_lock_handle(handle));
    if (block == nullptr) {
        inData->utils->host_dispose_handle(handle);
        return nullptr;
    }
    *block = handle;
    return block + 1;
}

void release(void* payload) {
    const PF_InData* inData = currentInData();
    if (inData == nullptr || payload == nullptr)
        return;
    PF_Handle handle = handleOf(payload);
    inData->utils->host_unlock_handle(handle);
    inData->utils->host_dispose_handle(handle);
}

PF_Handle handleOf(const void* payload) {
    return static_cast<const PF_Handle*>(payload)[-1];
}

void* payloadOf(PF_Handle handle) {
    return static_cast<PF_Handle*>(*handle) + 1;
}

std::int64_t handleSize(PF_Handle handle) {
    const PF_InData* inData = currentInData();
    return inData == nullptr
               ? 0
               : static_cast<std::int64_t>(inData->utils->host_get_handle_size(handle));
}

void* allocateAligned(std::size_t size, std::size_t alignment) {
    // For the word with the raw block's address, and for the alignment.
    const std::size_t slack = alignment + wordSize - 1;
    if (size > SIZE_MAX - slack)
        return nullptr;
    void* raw = allocate(size + slack);
    if (raw == nullptr)
        return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = (address + slack) & ~(alignment - 1);
    auto* payload = static_cast<char*>(raw) + (aligned - address);
    reinterpret_cast<void**>(payload)[-1] = raw;
    return payload;
}

void releaseAligned(void* payload) {
    if (payload != nullptr)
        release(static_cast<void**>(payload)[-1]);
}

void OutOfMemoryError() {
    throw static_cast<long>(PF_Err_OUT_OF_MEMORY);
}
