// The part of the Windows API and of its C runtime that opens files by a wide path, implemented
// with POSIX. Names, numbers and results are those of Windows.
//
// Both "/" and "\" separate the names in a path. POSIX allows a backslash inside a name, so the
// text between two "/" is one name if a file or folder of that name exists. A path that is not
// well-formed UTF-16 names no file. Links are followed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "platform/win32.h"

// The separator between the path of a folder and a name in it.
inline constexpr char16_t PATH_SEPARATOR = u'/';

using HANDLE = void*;
inline const HANDLE INVALID_HANDLE_VALUE =
    reinterpret_cast<HANDLE>(std::intptr_t{-1}); // NOLINT(performance-no-int-to-ptr)

inline constexpr std::size_t MAX_PATH = 260;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

struct WIN32_FIND_DATAW { // only the members that are used here
    DWORD dwFileAttributes;
    WCHAR cFileName[MAX_PATH]; // without the folder; zero-terminated
};

// The pattern must be a folder's path with a separator and the mask "*.*": it matches every entry,
// including ".", "..", hidden ones and names without a dot, in unspecified order. An entry whose
// name is not UTF-8 is omitted. INVALID_HANDLE_VALUE if the folder can't be read, and for every
// other mask. The caller must close any other handle with FindClose.
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data);
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data);
BOOL FindClose(HANDLE search);

// FALSE for a failure: DeleteFileW needs a file, RemoveDirectoryW an empty folder, CreateDirectoryW
// an existing parent. The security attributes are ignored.
BOOL DeleteFileW(LPCWSTR path);
BOOL CreateDirectoryW(LPCWSTR path, LPVOID securityAttributes);
BOOL RemoveDirectoryW(LPCWSTR path);

// As fopen, but null for a folder, and for a pipe, because opening one would block.
std::FILE* _wfopen(LPCWSTR path, LPCWSTR mode);

struct _stat64 {          // only the members that are used here
    std::int64_t st_size; // bytes; 0 for a device
};

// 0 for success, otherwise -1.
int _wstat64(LPCWSTR path, struct _stat64* status);

namespace platform {

// The name as the module's wide text; valid as long as the record.
inline const char16_t* nameOf(const WIN32_FIND_DATAW& entry) {
    return entry.cFileName;
}

} // namespace platform
