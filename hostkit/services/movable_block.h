// Memory that a module may use only while it has it locked. An unlocked block moves at each call
// into the host: a pointer that is kept across an unlock then reads the filling of an old place,
// and AddressSanitizer ends the process there.
#pragma once

#include <cstddef>
#include <vector>

namespace hostkit {

class MovableBlock {
public:
    // `address` always holds where the bytes lie at the moment; it must stay where it is.
    MovableBlock(std::vector<std::byte> content, void** address);
    ~MovableBlock();
    MovableBlock(const MovableBlock&) = delete;
    MovableBlock& operator=(const MovableBlock&) = delete;

    void lock();
    bool unlock(); // false: it is not locked
    bool isLocked() const { return locks_ > 0; }

    std::size_t size() const { return size_; }
    const std::byte* data() const { return bytes_.data(); }
    void resize(std::size_t size); // only while it is not locked; what is new is not zero

    // Moves all that are not locked.
    static void moveUnlocked();

private:
    void replace(std::vector<std::byte> bytes);

    std::vector<std::byte> bytes_; // one at least, so that each block has an address
    std::size_t size_;
    void** address_;
    int locks_ = 0;
};

// Neither zero, which ends texts, nor part of a pointer.
inline constexpr std::byte leftoverByte{0xA5};

} // namespace hostkit
