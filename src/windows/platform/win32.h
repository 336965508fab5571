// Includes the system's declarations, which replace those of src/platform.
//
// The module's wide text consists of char16_t on every platform; the system's WCHAR is another type
// with the same values. Only the overloads here convert between them.
#pragma once

#include <windows.h>
// Macros of the system's headers with common names.
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
