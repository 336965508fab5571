#include "pbhost/diagnostics/frame_fill.h"

#include <cstdint>
#include <cstring>

namespace pbhost {

namespace {

// The number at a place of a row. It depends on the row, so that rows copied from another place are
// not taken for unwritten, and not on the number before, so that the compiler can vectorize the
// fill.
std::uint32_t numberAt(int row, std::size_t place) {
    return static_cast<std::uint32_t>(row + 1) * 2654435761U +
           static_cast<std::uint32_t>(place) * 2246822519U;
}

std::size_t rowWords(const hostkit::World& world) {
    return static_cast<std::size_t>(world.width * world.pixelBytes()) / sizeof(std::uint32_t);
}

std::size_t rowStart(const hostkit::World& world, int row) {
    return static_cast<std::size_t>(world.rowBytes) * static_cast<std::size_t>(row);
}

bool isUnwritten(const hostkit::World& world, int row) {
    const std::byte* at = world.data.data() + rowStart(world, row);
    for (std::size_t i = 0; i < rowWords(world); ++i, at += sizeof(std::uint32_t)) {
        const std::uint32_t word = numberAt(row, i);
        if (std::memcmp(at, &word, sizeof word) != 0)
            return false;
    }
    return true;
}

} // namespace

void fillUnwritten(hostkit::World& world) {
    for (int row = 0; row < world.height; ++row) {
        std::byte* const at = world.data.data() + rowStart(world, row);
        const std::size_t words = rowWords(world);
        for (std::size_t i = 0; i < words; ++i) {
            const std::uint32_t word = numberAt(row, i);
            std::memcpy(at + i * sizeof word, &word, sizeof word);
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
