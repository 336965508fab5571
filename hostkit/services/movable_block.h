// Memory that a module may access only while it is locked. An unlocked block moves at each call
// into the host, so that access through a pointer kept after unlocking reads `leftoverByte`, and
// AddressSanitizer ends the process.
#pragma once

#include <cstddef>
#include <vector>

namespace hostkit {

class MovableBlock {
public:
    // `address` receives the block's current address at each move; it must outlive the block.
    MovableBlock(std::vector<std::byte> content, void** address);
    ~MovableBlock();
    MovableBlock(const MovableBlock&) = delete;
    MovableBlock& operator=(const MovableBlock&) = delete;

    void lock();
    bool unlock(); // false: it was not locked
    bool isLocked() const { return locks_ > 0; }

    std::size_t size() const { return size_; }
    const std::byte* data() const { return bytes_.data(); }
    void resize(std::size_t size); // only while unlocked; new bytes are `leftoverByte`

    // Moves all unlocked blocks.
    static void moveUnlocked();

private:
    void replace(std::vector<std::byte> bytes);

    std::vector<std::byte> bytes_; // never empty, so that each block has an address
    std::size_t size_;
    void** address_;
    int locks_ = 0;
};

// Fill of freed addresses and of new bytes: not zero, which would terminate texts.
inline constexpr std::byte leftoverByte{0xA5};

} // namespace hostkit
