// The part of the Windows API that a hidden window needs, implemented with POSIX: module, window
// classes, windows, stock objects, debug output.
//
// Names, numbers and results are those of Windows, so that callers need no change there; WCHAR is
// char16_t, because POSIX has no 16-bit wchar_t. Classes and windows are kept in memory until the
// module is unloaded. Strings that are passed in are copied. One thread only.
#pragma once

#include <cstdint>

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using ATOM = WORD;
using WCHAR = char16_t;
using LPCSTR = const char*;
using LPCWSTR = const WCHAR*;
using LPVOID = void*;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using HWND = struct HWND__*;
using HMENU = struct HMENU__*;
using HICON = struct HICON__*;
using HCURSOR = HICON;
using HBRUSH = struct HBRUSH__*;
using HGDIOBJ = void*;

using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

struct WNDCLASSEXA {
    UINT cbSize; // bytes of this record
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
    HICON hIconSm;
};

inline constexpr UINT CS_VREDRAW = 1;
inline constexpr UINT CS_HREDRAW = 2;
inline constexpr int BLACK_BRUSH = 4;
// A resource number in place of a name.
inline const LPCSTR IDC_ARROW =
    reinterpret_cast<LPCSTR>(std::uintptr_t{32512}); // NOLINT(performance-no-int-to-ptr)

// The executable of the process for a null name; other modules are unknown.
HMODULE GetModuleHandleA(LPCSTR name);

// A class is identified by its exact name only, for any instance. GetClassInfoExA leaves `result`
// unchanged if there is no such class. RegisterClassExA returns 0 if the name is taken.
// UnregisterClassA fails for a class that still has a window.
BOOL GetClassInfoExA(HINSTANCE instance, LPCSTR className, WNDCLASSEXA* result);
ATOM RegisterClassExA(const WNDCLASSEXA* description);
BOOL UnregisterClassA(LPCSTR className, HINSTANCE instance);

// Creates a window that is never on a screen; null if the class is not registered.
HWND CreateWindowExA(DWORD extendedStyle, LPCSTR className, LPCSTR title, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID parameter);
BOOL IsWindow(HWND window);
LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// The results are not null for objects that exist on Windows, and must not be released.
HCURSOR LoadCursorA(HINSTANCE instance, LPCSTR name);
HGDIOBJ GetStockObject(int index);

// Writes the text as UTF-8 to standard error if the environment variable TVELMARONDINE_DEBUG is set
// and not empty, as if a debugger were attached. Invalid UTF-16 becomes "?".
void OutputDebugStringW(LPCWSTR text);
