#include "shell/sequence_data.h"

#include <algorithm>
#include <cstring>

#include "command/command_scope.h"

namespace {

constexpr std::uint32_t writtenVersion = 1;
constexpr std::size_t versionSize = 4;          // bytes, as all sizes here
constexpr std::size_t flagAt = versionSize;     // of version 1
constexpr std::size_t pathAt = versionSize + 4; // of version 1
constexpr std::size_t oldPathAt = versionSize;  // of version 0

// The bytes of a handle, which is locked as long as this object exists.
class LockedBytes {
public:
    // Throws `long` 4 when the host cannot lock the handle.
    explicit LockedBytes(PF_Handle handle)
        : handle_(handle), address_(utils().host_lock_handle(handle)) {
        if (address_ == nullptr)
            OutOfMemoryError();
    }
    ~LockedBytes() { utils().host_unlock_handle(handle_); }
    LockedBytes(const LockedBytes&) = delete;
    LockedBytes& operator=(const LockedBytes&) = delete;

    char* address() const { return static_cast<char*>(address_); }

private:
    static const PF_UtilCallbacks& utils() { return *currentInData()->utils; }

    PF_Handle handle_;
    void* address_;
};

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

// The text from `at` to its final zero, or to the end of a block without one.
std::string_view textAt(std::string_view block, std::size_t at) {
    const std::string_view rest = block.substr(std::min(at, block.size()));
    return rest.substr(0, rest.find('\0'));
}

StoredSequence parse(std::string_view block) {
    StoredSequence stored;
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

} // namespace

StoredSequence readFlatBlock(PF_Handle block) {
    const auto size = static_cast<std::size_t>(handleSize(block));
    const LockedBytes bytes(block);
    return parse({bytes.address(), size});
}

PF_Handle writeFlatBlock(const StoredSequence& sequence) {
    NarrowString bytes;
    appendLittleEndian(bytes, writtenVersion);
    appendLittleEndian(bytes, sequence.defaultsPending ? 1 : 0);
    bytes.append(sequence.filePath.c_str());
    const std::size_t size = bytes.size() + 1; // with the final zero
    PF_Handle handle = currentInData()->utils->host_new_handle(size);
    if (handle == nullptr)
        OutOfMemoryError();
    try {
        std::memcpy(LockedBytes(handle).address(), bytes.c_str(), size);
    } catch (...) {
        currentInData()->utils->host_dispose_handle(handle);
        throw;
    }
    return handle;
}

SequenceData::SequenceData(GlobalData& owner, const StoredSequence& stored)
    : filePath(stored.filePath), defaultsPending(stored.defaultsPending), owner_(owner) {
    owner_.liveSequences.push_back(handleOf(this));
}

SequenceData::~SequenceData() {
    auto& live = owner_.liveSequences;
    const auto ours = std::find(live.begin(), live.end(), handleOf(this));
    if (ours == live.end())
        return;
    *ours = live.back();
    live.pop_back();
}

SequenceData* liveSequence(const GlobalData& globalData, PF_Handle handle) {
    const auto& live = globalData.liveSequences;
    const bool isLive = std::find(live.begin(), live.end(), handle) != live.end();
    return isLive ? objectIn<SequenceData>(handle) : nullptr;
}
