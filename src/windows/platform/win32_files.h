// Overloads of the system's file functions for paths of char16_t; see platform/win32.h.
//
// A path that is too long for the system's plain form is converted to its long form.
#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/win32.h"

// The separator between the path of a folder and a name in it.
inline constexpr char16_t PATH_SEPARATOR = u'\\';

namespace platform {

// The path in the system's form. The limit is the one for creating a folder.
inline std::wstring systemPath(const char16_t* path) {
    constexpr std::size_t longest = 247;
    std::wstring plain = systemText(path);
    if (plain.size() <= longest || plain.starts_with(L"\\\\?\\"))
        return plain;
    std::wstring whole(GetFullPathNameW(plain.c_str(), 0, nullptr, nullptr), L'\0');
    whole.resize(
        GetFullPathNameW(plain.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    if (whole.starts_with(L"\\\\"))
        return L"\\\\?\\UNC" + whole.substr(1);
    return L"\\\\?\\" + whole;
}

inline const char16_t* nameOf(const WIN32_FIND_DATAW& entry) {
    return reinterpret_cast<const char16_t*>(entry.cFileName);
}

} // namespace platform

inline HANDLE FindFirstFileW(const char16_t* pattern, WIN32_FIND_DATAW* data) {
    return FindFirstFileW(platform::systemPath(pattern).c_str(), data);
}
inline BOOL DeleteFileW(const char16_t* path) {
    return DeleteFileW(platform::systemPath(path).c_str());
}
inline BOOL CreateDirectoryW(const char16_t* path, LPSECURITY_ATTRIBUTES securityAttributes) {
    return CreateDirectoryW(platform::systemPath(path).c_str(), securityAttributes);
}
inline BOOL RemoveDirectoryW(const char16_t* path) {
    return RemoveDirectoryW(platform::systemPath(path).c_str());
}
inline std::FILE* _wfopen(const char16_t* path, const char16_t* mode) {
    return _wfopen(platform::systemPath(path).c_str(), platform::systemText(mode));
}

// The runtime's own function fails for a folder's path that ends in a separator and for the long
// form.
inline int _wstat64(const char16_t* path, struct _stat64* status) {
    WIN32_FILE_ATTRIBUTE_DATA found;
    if (!GetFileAttributesExW(platform::systemPath(path).c_str(), GetFileExInfoStandard, &found))
        return -1;
    status->st_size =
        static_cast<std::int64_t>((std::uint64_t{found.nFileSizeHigh} << 32) | found.nFileSizeLow);
    return 0;
}
