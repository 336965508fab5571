#include "hostkit/calls/memory_handles.h"

#include <cstring>
#include <memory>
#include <utility>

#include "hostkit/calls/ledger.h"
#include "hostkit/services/text.h"

namespace hostkit {

namespace {

std::vector<std::unique_ptr<AEGP_Mem>>& records() {
    static std::vector<std::unique_ptr<AEGP_Mem>> instance;
    return instance;
}

// `what` for the ledger: the start of the text.
template<class Text>
std::string shorten(Text text) {
    constexpr std::size_t limit = 40;
    return std::string("text: ")
        .append(text.substr(0, limit))
        .append(text.size() > limit ? "..." : "");
}

template<class Char>
std::vector<std::byte> copyWithZero(std::basic_string_view<Char> text) {
    std::vector<std::byte> bytes((text.size() + 1) * sizeof(Char), std::byte{0});
    std::memcpy(bytes.data(), text.data(), text.size() * sizeof(Char));
    return bytes;
}

} // namespace

AEGP_MemHandle newTextHandle(std::string_view text) {
    return newMemoryHandle(copyWithZero(text), shorten(text));
}

AEGP_MemHandle newTextHandle(std::u16string_view text) {
    return newMemoryHandle(copyWithZero(text), shorten(toUtf8(text)));
}

AEGP_MemHandle newMemoryHandle(std::vector<std::byte> bytes, const std::string& what) {
    records().push_back(std::make_unique<AEGP_Mem>());
    AEGP_Mem* record = records().back().get();
    record->block = std::make_unique<MovableBlock>(std::move(bytes), &record->address);
    ledger::acquire(ledger::Kind::Memory, record, what);
    return record;
}

AEGP_Mem* findMemory(AEGP_MemHandle memory, const char* call) {
    return ledger::requireAcquired(ledger::Kind::Memory, memory, call) ? memory : nullptr;
}

void resetMemoryHandles() {
    records().clear();
}

} // namespace hostkit
