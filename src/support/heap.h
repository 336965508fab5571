// The host's heap: all memory that is kept longer than a command is allocated from the host, as
// handles.
//
// One block is one host handle, locked from allocation to release, so its address never changes.
// The word in front of the payload holds the handle; nothing else is recorded of a block. The heap
// calls the host through the running command: outside a command it neither allocates nor releases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "sdk/pf_types.h"

// size is in bytes; 0 is allowed. The payload is aligned like a pointer. Null if no command runs or
// if the host has no memory.
void* allocate(std::size_t size);

// Releases the block; null is accepted. Does nothing if no command runs: the block is then not
// released.
void release(void* payload);

// The handle that owns a payload, or an aeBase object in one. Does not call the host.
PF_Handle handleOf(const void* payload);

// The payload of a handle from `allocate`. Does not call the host: the handle is locked.
void* payloadOf(PF_Handle handle);

// The host's size of a handle, in bytes: that of the payload and of the word before it.
std::int64_t handleSize(PF_Handle handle);

// The same with an alignment in bytes, a power of two.
void* allocateAligned(std::size_t size, std::size_t alignment);
void releaseAligned(void* payload);

// Base class of the objects on the host's heap. A new-expression returns null if there is no memory
// and skips the constructor.
class aeBase {
public:
    aeBase() = default;
    virtual ~aeBase() = default;
    aeBase(const aeBase&) = delete;
    aeBase& operator=(const aeBase&) = delete;

    static void* operator new(std::size_t size) noexcept { return allocate(size); }
    static void operator delete(void* object) noexcept { release(object); }
};

// Ends the running command with the host's code for lack of memory: throws the `long` 4.
[[noreturn]] void OutOfMemoryError();

// The allocator of strings and vectors on the same heap; stateless. Throws the `long` 4 if
// `allocate` returns null, so that the command ends with that code.
template<class T>
class aeAllocator {
public:
    using value_type = T;
    static_assert(alignof(T) <= alignof(void*), "the payload begins one pointer after the block");

    aeAllocator() = default;
    template<class U>
    aeAllocator(const aeAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) {
        if (count > SIZE_MAX / sizeof(T))
            OutOfMemoryError();
        void* memory = ::allocate(count * sizeof(T));
        if (memory == nullptr)
            OutOfMemoryError();
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t) noexcept { release(memory); }

    friend bool operator==(const aeAllocator&, const aeAllocator&) { return true; }
};

// Creates an object of an aeBase class; throws the `long` 4 if there is no memory for it.
template<class T, class... Arguments>
std::unique_ptr<T> makeObject(Arguments&&... arguments) {
    std::unique_ptr<T> object(new T(std::forward<Arguments>(arguments)...));
    if (object == nullptr)
        OutOfMemoryError();
    return object;
}
