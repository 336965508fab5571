// The system's own declarations, where src/platform has its own.
//
// The module's wide text is made of char16_t on every platform; the system's WCHAR is a type of its
// own with the same values. The overloads here are the one place where they meet.
#pragma once

#include <windows.h>
// The system's headers use some plain words for macros.
#undef interface
#undef near
#undef far
#undef small

namespace platform {

inline LPCWSTR systemText(const char16_t* text) {
    return reinterpret_cast<LPCWSTR>(text);
}

} // namespace platform

inline void OutputDebugStringW(const char16_t* text) {
    OutputDebugStringW(platform::systemText(text));
}
