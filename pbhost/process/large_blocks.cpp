#include "pbhost/process/large_blocks.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace pbhost {

namespace {

// Makes the C library's heap start with huge pages; unused ones take no memory. Without huge pages
// or address space the heap grows as usual.
void reserveHugePages() {
    constexpr std::uintptr_t hugePage = 2 << 20;
    constexpr int reserved = 512 << 20;
    mallopt(M_TOP_PAD, reserved);
    const auto from = reinterpret_cast<std::uintptr_t>(sbrk(0));
    // Volatile, or the compiler removes the allocation.
    void* volatile block = std::malloc(hugePage);
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
    mallopt(M_ARENA_MAX, 1); // all threads use the same heap
    reserveHugePages();
    mallopt(M_TOP_PAD, 64 << 20);
}

} // namespace pbhost
