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

// The last places that blocks have left. As long as they are kept, no block gets them again.
class OldPlaces {
public:
    void keep(std::vector<std::byte> left) {
        if (!left.empty())
            std::memset(left.data(), std::to_integer<int>(leftoverByte), left.size());
        ASAN_POISON_MEMORY_REGION(left.data(), left.size());
        std::vector<std::byte>& oldest = places_[next_];
        ASAN_UNPOISON_MEMORY_REGION(oldest.data(), oldest.size());
        oldest = std::move(left);
        next_ = (next_ + 1) % places_.size();
    }

private:
    std::array<std::vector<std::byte>, 32> places_;
    std::size_t next_ = 0;
};

OldPlaces& oldPlaces() {
    static OldPlaces& instance = *new OldPlaces; // blocks may end after any static object
    return instance;
}

std::vector<MovableBlock*>& unlocked() {
    static auto& instance = *new std::vector<MovableBlock*>;
    return instance;
}

// Mostly the newest: a handle is locked right after it was made.
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
    oldPlaces().keep(std::exchange(bytes_, std::move(bytes)));
    *address_ = bytes_.data();
}

} // namespace hostkit
