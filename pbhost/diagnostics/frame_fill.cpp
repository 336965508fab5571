#include "pbhost/diagnostics/frame_fill.h"

#include <cstdint>
#include <cstring>

namespace pbhost {

namespace {

// The numbers of one row. They depend on the row, so that rows copied from another place are not
// taken for unwritten.
class Filling {
public:
    explicit Filling(int row) : state_(static_cast<std::uint32_t>(row + 1) * 2654435761U) {}
    std::uint32_t next() {
        state_ = state_ * 1664525U + 1013904223U;
        return state_ ^ state_ >> 15;
    }

private:
    std::uint32_t state_;
};

std::size_t rowWords(const hostkit::World& world) {
    return static_cast<std::size_t>(world.width * world.pixelBytes()) / sizeof(std::uint32_t);
}

std::size_t rowStart(const hostkit::World& world, int row) {
    return static_cast<std::size_t>(world.rowBytes) * static_cast<std::size_t>(row);
}

bool isUnwritten(const hostkit::World& world, int row) {
    const std::byte* at = world.data.data() + rowStart(world, row);
    Filling filling(row);
    for (std::size_t i = 0; i < rowWords(world); ++i, at += sizeof(std::uint32_t)) {
        const std::uint32_t word = filling.next();
        if (std::memcmp(at, &word, sizeof word) != 0)
            return false;
    }
    return true;
}

} // namespace

void fillUnwritten(hostkit::World& world) {
    for (int row = 0; row < world.height; ++row) {
        std::byte* at = world.data.data() + rowStart(world, row);
        Filling filling(row);
        for (std::size_t i = 0; i < rowWords(world); ++i, at += sizeof(std::uint32_t)) {
            const std::uint32_t word = filling.next();
            std::memcpy(at, &word, sizeof word);
        }
    }
}

std::optional<int> unwrittenRow(const hostkit::World& world) {
    for (int row = 0; row < world.height; ++row)
        if (isUnwritten(world, row))
            return row;
    return std::nullopt;
}

} // namespace pbhost
