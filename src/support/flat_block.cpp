#include "support/flat_block.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::uint32_t writtenVersion = 1;
constexpr std::size_t versionSize = 4;          // bytes, as all sizes here
constexpr std::size_t flagAt = versionSize;     // of version 1
constexpr std::size_t pathAt = versionSize + 4; // of version 1
constexpr std::size_t oldPathAt = versionSize;  // of version 0

std::uint32_t littleEndian(std::string_view bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < versionSize; ++i)
        number |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    return number;
}

void appendLittleEndian(NarrowString& bytes, std::uint32_t number) {
    for (std::size_t i = 0; i < versionSize; ++i)
        bytes += static_cast<char>(number >> (8 * i) & 0xFF);
}

// The text from there to its terminating zero, or to the end of a truncated block.
std::string_view textAt(std::string_view block, std::size_t at) {
    const std::string_view rest = block.substr(std::min(at, block.size()));
    return rest.substr(0, rest.find('\0'));
}

} // namespace

FlatBlock readFlatBlock(std::string_view block) {
    FlatBlock stored;
    if (block.size() < versionSize)
        return stored;
    const std::uint32_t version = littleEndian(block);
    if (version == writtenVersion) {
        stored.filePath = textAt(block, pathAt);
        stored.defaultsPending = block.size() <= flagAt || (block[flagAt] & 1) != 0;
    } else if (version == 0) {
        stored.filePath = textAt(block, oldPathAt);
        stored.defaultsPending = stored.filePath.empty();
    }
    return stored;
}

NarrowString flatBlockOf(std::string_view filePath, bool defaultsPending) {
    NarrowString bytes;
    appendLittleEndian(bytes, writtenVersion);
    appendLittleEndian(bytes, defaultsPending ? 1 : 0);
    bytes.append(filePath).append(1, '\0');
    return bytes;
}
