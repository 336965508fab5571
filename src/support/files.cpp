#include "support/files.h"

#include <algorithm>
#include <array>
#include <memory>

namespace _JST {

namespace {

struct OpenMode {
    char character;
    StreamMode mode;
    const char16_t* text; // for the runtime; all streams are binary
};

constexpr std::array<OpenMode, 4> openModes = {{{'r', StreamRead, u"rb"},
                                                {'w', StreamWrite, u"wb"},
                                                {'e', StreamEdit, u"rb+"},
                                                {'a', StreamAppend, u"ab"}}};

// Ends a search even if an allocation for the list throws.
struct EndOfSearch {
    using pointer = HANDLE;
    void operator()(HANDLE search) const { FindClose(search); }
};

} // namespace

StreamMode streamModeOf(char character) {
    for (const OpenMode& known : openModes)
        if (known.character == character)
            return known.mode;
    return StreamClosed;
}

std::FILE* openStream(std::string_view path, StreamMode mode) {
    const auto known = std::ranges::find(openModes, mode, &OpenMode::mode);
    return _wfopen(toWide(path).c_str(), known->text);
}

std::uint32_t bytesLeft(std::FILE* stream, std::string_view path) {
    const long position = std::ftell(stream);
    struct _stat64 status {};
    if (position < 0 || _wstat64(toWide(path).c_str(), &status) != 0)
        return 0;
    // Also switches a stream from writing to reading.
    std::fseek(stream, position, SEEK_SET);
    return static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(status.st_size - position, 0, UINT32_MAX));
}

void forEachEntry(std::string_view folder, bool areFoldersWanted,
                  const std::function<void(const NarrowString& path)>& take) {
    WideString prefix = toWide(folder);
    WIN32_FIND_DATAW entry;
    const std::unique_ptr<void, EndOfSearch> search(
        FindFirstFileW(concatenate(prefix, u"\\*.*").c_str(), &entry));
    if (search.get() == INVALID_HANDLE_VALUE)
        return;
    prefix += PATH_SEPARATOR;
    do {
        const std::u16string_view name = platform::nameOf(entry);
        const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (isFolder == areFoldersWanted && name != u"." && name != u"..")
            take(toNarrow(concatenate(prefix, platform::nameOf(entry))));
    } while (FindNextFileW(search.get(), &entry) != FALSE);
}

} // namespace _JST
