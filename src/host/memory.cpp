#include "host/memory.h"

namespace AEO {

namespace {

template<class String>
String readAs(SPBasicSuite* basic, AEGP_MemHandle handle) {
    Memory memory(basic, handle);
    const auto* text = static_cast<const typename String::value_type*>(memory.lock());
    return text == nullptr ? String() : String(text);
}

} // namespace

Memory::Memory(SPBasicSuite* basic, AEGP_MemHandle handle) : handle_(handle), memories_(basic) {}

Memory::Memory(SPBasicSuite* basic, const char* what, AEGP_MemSize size, AEGP_MemFlag flags)
    : memories_(basic) {
    handle_ =
        query(memories_, &AEGP_MemorySuite1::AEGP_NewMemHandle, currentPluginId, what, size, flags);
}

Memory::~Memory() {
    if (err() == 0 && handle_ != nullptr)
        dispose(memories_, &AEGP_MemorySuite1::AEGP_FreeMemHandle, handle_);
}

void* Memory::lock() {
    if (handle_ == nullptr)
        return nullptr;
    return query(memories_, &AEGP_MemorySuite1::AEGP_LockMemHandle, handle_);
}

void Memory::unlock() {
    call(memories_, &AEGP_MemorySuite1::AEGP_UnlockMemHandle, handle_);
}

AEGP_MemSize Memory::size() {
    return query(memories_, &AEGP_MemorySuite1::AEGP_GetMemHandleSize, handle_);
}

void Memory::resize(const char* what, AEGP_MemSize size) {
    call(memories_, &AEGP_MemorySuite1::AEGP_ResizeMemHandle, what, size, handle_);
}

NarrowString readText(SPBasicSuite* basic, AEGP_MemHandle handle) {
    return readAs<NarrowString>(basic, handle);
}

WideString readWideText(SPBasicSuite* basic, AEGP_MemHandle handle) {
    return readAs<WideString>(basic, handle);
}

} // namespace AEO
