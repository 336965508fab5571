#include "platform/win32_files.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <string>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/utf16.h"

namespace {

bool isThere(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

// The end of the name that begins at `start`: the next "/" if everything before it exists as
// written, otherwise the first separator.
std::size_t endOfName(const std::string& path, std::size_t start) {
    const std::size_t slash = std::min(path.find('/', start), path.size());
    const std::size_t first = std::min(path.find('\\', start), slash);
    return first == slash || isThere(path.substr(0, slash)) ? slash : first;
}

// A path for POSIX functions; empty, which names no file, if it is not well-formed UTF-16 or too
// long.
std::string posixPath(std::u16string_view wide) {
    auto [path, isExact] = platform::toUtf8(wide);
    if (!isExact || path.size() >= PATH_MAX)
        return {};
    for (std::size_t at = endOfName(path, 0); at < path.size(); at = endOfName(path, at + 1))
        path[at] = '/';
    return path;
}

bool isFolder(DIR* parent, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK)
        return entry.d_type == DT_DIR;
    struct stat status {};
    return fstatat(dirfd(parent), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// False for a name that is not UTF-8 or too long.
bool describe(DIR* parent, const dirent& entry, WIN32_FIND_DATAW& data) {
    const auto [name, isExact] = platform::toUtf16(entry.d_name);
    if (!isExact || name.size() >= std::size(data.cFileName))
        return false;
    data.dwFileAttributes =
        isFolder(parent, entry) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
    *std::copy(name.begin(), name.end(), data.cFileName) = u'\0';
    return true;
}

} // namespace

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) {
    constexpr std::u16string_view mask = u"*.*";
    std::u16string_view folder = pattern;
    if (!folder.ends_with(mask))
        return INVALID_HANDLE_VALUE;
    folder.remove_suffix(mask.size());
    if (!folder.empty() && folder.back() != u'/' && folder.back() != u'\\')
        return INVALID_HANDLE_VALUE;
    // The separator is removed too, since a name may end in a backslash. The root keeps its
    // separator.
    if (folder.size() > 1)
        folder.remove_suffix(1);
    DIR* search = opendir(folder.empty() ? "." : posixPath(folder).c_str());
    if (search == nullptr)
        return INVALID_HANDLE_VALUE;
    if (FindNextFileW(search, data) != FALSE)
        return search;
    closedir(search);
    return INVALID_HANDLE_VALUE;
}

BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data) {
    if (search == nullptr || search == INVALID_HANDLE_VALUE)
        return FALSE;
    auto* folder = static_cast<DIR*>(search);
    while (const dirent* entry = readdir(folder))
        if (describe(folder, *entry, *data))
            return TRUE;
    return FALSE;
}

BOOL FindClose(HANDLE search) {
    if (search == nullptr || search == INVALID_HANDLE_VALUE)
        return FALSE;
    return closedir(static_cast<DIR*>(search)) == 0 ? TRUE : FALSE;
}

BOOL DeleteFileW(LPCWSTR path) {
    return unlink(posixPath(path).c_str()) == 0 ? TRUE : FALSE;
}

BOOL CreateDirectoryW(LPCWSTR path, LPVOID /*securityAttributes*/) {
    constexpr mode_t everybody = 0777; // less the process's umask
    return mkdir(posixPath(path).c_str(), everybody) == 0 ? TRUE : FALSE;
}

BOOL RemoveDirectoryW(LPCWSTR path) {
    return rmdir(posixPath(path).c_str()) == 0 ? TRUE : FALSE;
}

std::FILE* _wfopen(LPCWSTR path, LPCWSTR mode) {
    const std::string name = posixPath(path);
    struct stat status {};
    const bool isKnown = stat(name.c_str(), &status) == 0;
    if (isKnown && !S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode) && !S_ISBLK(status.st_mode))
        return nullptr;
    return std::fopen(name.c_str(), platform::toUtf8(mode).text.c_str());
}

int _wstat64(LPCWSTR path, struct _stat64* status) {
    struct stat found {};
    if (stat(posixPath(path).c_str(), &found) != 0)
        return -1;
    status->st_size = found.st_size;
    return 0;
}
