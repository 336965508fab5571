#include "pbhost/process/large_blocks.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace pbhost {

namespace {

// Of the C library's heap, before its first large block. What is not used takes no memory. Where
// the system has no huge pages or the address space is limited, the heap grows as it did.
void reserveHugePages() {
    constexpr std::uintptr_t hugePage = 2 << 20;
    constexpr int reserved = 512 << 20;
    mallopt(M_TOP_PAD, reserved);
    const auto from = reinterpret_cast<std::uintptr_t>(sbrk(0));
    void* volatile block = std::malloc(hugePage); // or the compiler leaves it out
    std::free(block);
    const auto to = reinterpret_cast<std::uintptr_t>(sbrk(0));
    const std::uintptr_t aligned = (from + hugePage - 1) / hugePage * hugePage;
    if (aligned < to)
        madvise(reinterpret_cast<void*>(aligned), to - aligned, MADV_HUGEPAGE);
}

} // namespace

void keepLargeBlocks() {
    constexpr int large = 1 << 30;
    mallopt(M_MMAP_THRESHOLD, large);
    mallopt(M_TRIM_THRESHOLD, large);
    mallopt(M_ARENA_MAX, 1); // other threads take from the same heap
    reserveHugePages();
    mallopt(M_TOP_PAD, 64 << 20);
}

} // namespace pbhost
