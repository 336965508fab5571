// Windows only: a window class under the name that a device would use for its own.
#pragma once

#include <gtest/gtest.h>

#include "platform/win32.h"

inline LRESULT CALLBACK rejectCreation(HWND window, UINT message, WPARAM first, LPARAM second) {
    return message == WM_NCCREATE ? FALSE : DefWindowProcA(window, message, first, second);
}

// Registers the class for this program; no window of it can be created. A device that is destroyed
// removes it.
inline void takeWindowClass(const char* name) {
    WNDCLASSEXA taken{};
    taken.cbSize = sizeof(taken);
    taken.lpfnWndProc = rejectCreation;
    taken.hInstance = GetModuleHandleA(nullptr);
    taken.lpszClassName = name;
    EXPECT_NE(RegisterClassExA(&taken), 0) << name;
}
