#include "shell/instance/sequence_data.h"

#include <algorithm>
#include <cstring>

#include "command/command_scope.h"
#include "support/flat_block.h"

namespace {

// The bytes of a handle, locked for the lifetime of this object.
class LockedBytes {
public:
    // Throws `long` 4 if the host cannot lock the handle.
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

} // namespace

StoredSequence readFlatBlock(PF_Handle block) {
    const auto size = static_cast<std::size_t>(handleSize(block));
    const LockedBytes bytes(block);
    const FlatBlock stored = readFlatBlock(std::string_view(bytes.address(), size));
    return {NarrowString(stored.filePath), stored.defaultsPending};
}

PF_Handle writeFlatBlock(const StoredSequence& sequence) {
    const NarrowString bytes =
        flatBlockOf(sequence.filePath.c_str(), sequence.defaultsPending); // up to a zero
    const std::size_t size = bytes.size();
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
