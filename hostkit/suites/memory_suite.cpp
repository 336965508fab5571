#include <utility>

#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/memory_handles.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err newMemHandle(AEGP_PluginID plugin, const char* what, AEGP_MemSize size, AEGP_MemFlag flags,
                   AEGP_MemHandle* memory) {
    constexpr const char* call = "AEGP_NewMemHandle";
    return contractCall<AEGP_MemorySuite1>(call, plugin, [&] {
        if (what == nullptr || memory == nullptr)
            return misuse(call, "the name or the handle pointer is null");
        const bool isCleared = (flags & AEGP_MemFlag_CLEAR) != 0;
        *memory = newMemoryHandle(std::vector(size, isCleared ? std::byte{0} : leftoverByte), what);
        return PF_Err_NONE;
    });
}

A_Err freeMemHandle(AEGP_MemHandle memory) {
    constexpr const char* call = "AEGP_FreeMemHandle";
    return contractCall<AEGP_MemorySuite1>(call, [&] {
        if (!ledger::release(ledger::Kind::Memory, memory, call))
            return PF_Err_BAD_CALLBACK_PARAM;
        memory->block.reset();
        return PF_Err_NONE;
    });
}

A_Err lockMemHandle(AEGP_MemHandle memory, void** address) {
    constexpr const char* call = "AEGP_LockMemHandle";
    return contractCall<AEGP_MemorySuite1>(call, [&] {
        AEGP_Mem* record = findMemory(memory, call);
        if (record == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (address == nullptr)
            return misuse(call, "the address pointer is null");
        record->block->lock();
        *address = record->address;
        return PF_Err_NONE;
    });
}

A_Err unlockMemHandle(AEGP_MemHandle memory) {
    constexpr const char* call = "AEGP_UnlockMemHandle";
    return contractCall<AEGP_MemorySuite1>(call, [&] {
        AEGP_Mem* record = findMemory(memory, call);
        if (record == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (!record->block->unlock())
            return misuse(call, "a handle that is not locked");
        return PF_Err_NONE;
    });
}

A_Err getMemHandleSize(AEGP_MemHandle memory, AEGP_MemSize* size) {
    constexpr const char* call = "AEGP_GetMemHandleSize";
    return contractCall<AEGP_MemorySuite1>(call, [&] {
        const AEGP_Mem* record = findMemory(memory, call);
        if (record == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (size == nullptr)
            return misuse(call, "the size pointer is null");
        *size = static_cast<AEGP_MemSize>(record->block->size());
        return PF_Err_NONE;
    });
}

A_Err resizeMemHandle(const char* what, AEGP_MemSize size, AEGP_MemHandle memory) {
    constexpr const char* call = "AEGP_ResizeMemHandle";
    return contractCall<AEGP_MemorySuite1>(call, [&] {
        AEGP_Mem* record = findMemory(memory, call);
        if (record == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (what == nullptr)
            return misuse(call, "the name is null");
        if (record->block->isLocked())
            return misuse(call, "a handle that is locked");
        record->block->resize(size);
        return PF_Err_NONE;
    });
}

} // namespace

const AEGP_MemorySuite1& memorySuite() {
    static const AEGP_MemorySuite1 table = {newMemHandle,    freeMemHandle,    lockMemHandle,
                                            unlockMemHandle, getMemHandleSize, resizeMemHandle};
    return table;
}

} // namespace hostkit::tables
