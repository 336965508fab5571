#include "platform/win32.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <list>
#include <map>
#include <string>

#include <sys/auxv.h>

#include "platform/utf16.h"

struct HWND__ {
    std::string className;
};

namespace {

struct Desktop {
    std::map<std::string, WNDCLASSEXA, std::less<>> classes;
    std::list<HWND__> windows; // a list: a window's address is its handle
};

Desktop& desktop() {
    static Desktop theDesktop;
    return theDesktop;
}

} // namespace

HMODULE GetModuleHandleA(LPCSTR name) {
    if (name != nullptr)
        return nullptr;
    // The program headers are in the executable's image, so every module sees the same address.
    return reinterpret_cast<HMODULE>(getauxval(AT_PHDR)); // NOLINT(performance-no-int-to-ptr)
}

BOOL GetClassInfoExA(HINSTANCE /*instance*/, LPCSTR className, WNDCLASSEXA* result) {
    if (className == nullptr || result == nullptr)
        return FALSE;
    const auto found = desktop().classes.find(className);
    if (found == desktop().classes.end())
        return FALSE;
    *result = found->second;
    return TRUE;
}

ATOM RegisterClassExA(const WNDCLASSEXA* description) {
    if (description == nullptr || description->cbSize != sizeof(WNDCLASSEXA) ||
        description->lpszClassName == nullptr)
        return 0;
    auto& classes = desktop().classes;
    const auto [place, isNew] = classes.emplace(description->lpszClassName, *description);
    if (!isNew)
        return 0;
    place->second.lpszClassName = place->first.c_str();
    constexpr ATOM firstAtom = 0xC000;
    return static_cast<ATOM>(firstAtom + classes.size());
}

BOOL UnregisterClassA(LPCSTR className, HINSTANCE /*instance*/) {
    if (className == nullptr)
        return FALSE;
    const auto found = desktop().classes.find(className);
    const auto isOfClass = [&](const HWND__& window) { return window.className == className; };
    if (found == desktop().classes.end() || std::ranges::any_of(desktop().windows, isOfClass))
        return FALSE;
    desktop().classes.erase(found);
    return TRUE;
}

HWND CreateWindowExA(DWORD /*extendedStyle*/, LPCSTR className, LPCSTR /*title*/, DWORD /*style*/,
                     int /*x*/, int /*y*/, int /*width*/, int /*height*/, HWND /*parent*/,
                     HMENU /*menu*/, HINSTANCE /*instance*/, LPVOID /*parameter*/) {
    if (className == nullptr || !desktop().classes.contains(className))
        return nullptr;
    return &desktop().windows.emplace_back(HWND__{className});
}

BOOL IsWindow(HWND window) {
    return std::ranges::any_of(desktop().windows, [=](HWND__& known) { return &known == window; });
}

LRESULT DefWindowProcA(HWND /*window*/, UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    return 0;
}

HCURSOR LoadCursorA(HINSTANCE /*instance*/, LPCSTR name) {
    return reinterpret_cast<HCURSOR>(const_cast<char*>(name));
}

HGDIOBJ GetStockObject(int index) {
    static std::array<char, 20> tokens; // Windows has the numbers 0 to 19
    const auto place = static_cast<std::size_t>(index);
    return place < tokens.size() ? &tokens[place] : nullptr;
}

void OutputDebugStringW(LPCWSTR text) {
    const char* wanted = std::getenv("TVELMARONDINE_DEBUG");
    if (text == nullptr || wanted == nullptr || *wanted == '\0')
        return;
    const std::string narrow = platform::toUtf8(text).text;
    std::fwrite(narrow.data(), 1, narrow.size(), stderr);
}
