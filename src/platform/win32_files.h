// The part of the Windows API and of its C runtime that reaches files by a wide path, over POSIX:
// names, numbers and results are the system's own.
//
// Both "/" and "\" separate the names in a path. POSIX allows a backslash inside a name, so what
// stands between two "/" is one name if it exists just as it is written. A path that is not
// well-formed UTF-16 names nothing. Links are followed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "platform/win32.h"

// What is to be put between the path of a folder and a name in it, where that is not a backslash. A
// macro, so that its absence can be asked for: the system's own headers have no such name.
#define PATH_SEPARATOR u'/'

using HANDLE = void*;
inline const HANDLE INVALID_HANDLE_VALUE =
    reinterpret_cast<HANDLE>(std::intptr_t{-1}); // NOLINT(performance-no-int-to-ptr)

inline constexpr std::size_t MAX_PATH = 260;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

struct WIN32_FIND_DATAW { // less what nobody asks for here
    DWORD dwFileAttributes;
    WCHAR cFileName[MAX_PATH]; // without the folder; zero-terminated
};

// The pattern is a folder's path with the mask "*.*" behind its separator: it matches every entry,
// "." and "..", hidden ones and names without a dot too, in no particular order. An entry whose
// name is not UTF-8 has no name here and is left out. INVALID_HANDLE_VALUE when the folder can't be
// read, and for every other mask. The caller owes FindClose for a handle, not for that value.
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data);
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data);
BOOL FindClose(HANDLE search);

// FALSE when nothing was done: DeleteFileW wants a file, RemoveDirectoryW an empty folder, and
// CreateDirectoryW an existing parent. The security attributes are ignored.
BOOL DeleteFileW(LPCWSTR path);
BOOL CreateDirectoryW(LPCWSTR path, LPVOID securityAttributes);
BOOL RemoveDirectoryW(LPCWSTR path);

// As fopen, but only for what can be read and written as a file: null for a folder, and for a pipe,
// whose opening would wait for its other end.
std::FILE* _wfopen(LPCWSTR path, LPCWSTR mode);

struct _stat64 {          // less what nobody asks for here
    std::int64_t st_size; // bytes; 0 for a device
};

// 0 for success, otherwise -1.
int _wstat64(LPCWSTR path, struct _stat64* status);

namespace platform {

// The name in the form of the module's wide text; the record must live on.
inline const char16_t* nameOf(const WIN32_FIND_DATAW& entry) {
    return entry.cFileName;
}

} // namespace platform
