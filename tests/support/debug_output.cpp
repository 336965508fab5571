#include "tests/support/debug_output.h"

#include <array>
#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/win32.h"
#include "support/utf.h"

#ifdef _WIN32

namespace {

std::wstring captured;

// OutputDebugString raises an exception with the wide text, older systems and Wine with the text in
// the ANSI code page. Handling it keeps the text from a real debugger.
LONG CALLBACK capture(EXCEPTION_POINTERS* event) {
    constexpr DWORD wideText = 0x4001000A;   // DBG_PRINTEXCEPTION_WIDE_C
    constexpr DWORD narrowText = 0x40010006; // DBG_PRINTEXCEPTION_C
    const EXCEPTION_RECORD& record = *event->ExceptionRecord;
    if (record.ExceptionCode != wideText && record.ExceptionCode != narrowText)
        return EXCEPTION_CONTINUE_SEARCH;
    // The length includes the terminating zero.
    const auto length = static_cast<int>(record.ExceptionInformation[0]) - 1;
    const auto* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
    if (record.ExceptionCode == wideText) {
        captured.append(reinterpret_cast<const wchar_t*>(text), static_cast<std::size_t>(length));
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_ACP, 0, text, length, wide.data(), length)));
    captured += wide;
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

std::string debugOutputOf(const std::function<void()>& work) {
    captured.clear();
    void* handler = AddVectoredExceptionHandler(1, capture);
    work();
    RemoveVectoredExceptionHandler(handler);
    std::string narrow;
    for (const wchar_t unit : captured) {
        std::array<char, 6> bytes{};
        narrow.append(bytes.data(), static_cast<std::size_t>(utf8Encode(unit, bytes.data())));
    }
    return narrow;
}

#else

std::string debugOutputOf(const std::function<void()>& work) {
    setenv("TVELMARONDINE_DEBUG", "1", 1);
    testing::internal::CaptureStderr();
    work();
    unsetenv("TVELMARONDINE_DEBUG");
    return testing::internal::GetCapturedStderr();
}

#endif
