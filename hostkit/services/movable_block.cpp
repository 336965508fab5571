#include "hostkit/services/movable_block.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#if defined(__has_feature)
#define HAS_FEATURE(feature) __has_feature(feature) // how Clang tells it
#else
#define HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || HAS_FEATURE(address_sanitizer)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

namespace hostkit {

namespace {

// The blocks' most recent former allocations, poisoned. While they are kept, no new allocation gets
// their addresses.
class FormerAllocations {
public:
    void keep(std::vector<std::byte> former) {
        if (!former.empty())
            std::memset(former.data(), std::to_integer<int>(leftoverByte), former.size());
        ASAN_POISON_MEMORY_REGION(former.data(), former.size());
        std::vector<std::byte>& oldest = allocations_[next_];
        ASAN_UNPOISON_MEMORY_REGION(oldest.data(), oldest.size());
        oldest = std::move(former);
        next_ = (next_ + 1) % allocations_.size();
    }

private:
    std::array<std::vector<std::byte>, 32> allocations_;
    std::size_t next_ = 0;
};

FormerAllocations& formerAllocations() {
    // Never destroyed, because blocks may outlive any static object.
    static FormerAllocations& instance = *new FormerAllocations;
    return instance;
}

std::vector<MovableBlock*>& unlocked() {
    static auto& instance = *new std::vector<MovableBlock*>;
    return instance;
}

// Searched from the end: a handle is usually locked right after it was allocated.
void eraseFrom(std::vector<MovableBlock*>& blocks, const MovableBlock* block) {
    const auto found = std::find(blocks.rbegin(), blocks.rend(), block);
    if (found != blocks.rend())
        blocks.erase(std::next(found).base());
}

} // namespace

MovableBlock::MovableBlock(std::vector<std::byte> content, void** address)
    : bytes_(std::move(content)), size_(bytes_.size()), address_(address) {
    bytes_.resize(std::max<std::size_t>(size_, 1));
    unlocked().push_back(this);
    *address_ = bytes_.data();
}

MovableBlock::~MovableBlock() {
    eraseFrom(unlocked(), this);
}

void MovableBlock::lock() {
    if (locks_++ == 0)
        eraseFrom(unlocked(), this);
}

bool MovableBlock::unlock() {
    if (locks_ == 0)
        return false;
    if (--locks_ == 0)
        unlocked().push_back(this);
    return true;
}

void MovableBlock::resize(std::size_t size) {
    std::vector<std::byte> bytes(std::max<std::size_t>(size, 1), leftoverByte);
    std::copy_n(bytes_.begin(), std::min(size_, size), bytes.begin());
    size_ = size;
    replace(std::move(bytes));
}

void MovableBlock::moveUnlocked() {
    for (MovableBlock* block : unlocked())
        block->replace(block->bytes_);
}

void MovableBlock::replace(std::vector<std::byte> bytes) {
    formerAllocations().keep(std::exchange(bytes_, std::move(bytes)));
    *address_ = bytes_.data();
}

} // namespace hostkit
