#include "tests/support/debug_output.h"

#include <array>
#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/win32.h"
#include "support/utf.h"

#ifdef _WIN32

namespace {

std::u16string heard;

// The system tells a debugger by an exception, first with the wide text. To handle it is to be the
// debugger: nobody else hears of the text.
LONG CALLBACK listen(EXCEPTION_POINTERS* event) {
    constexpr DWORD wideText = 0x4001000A; // DBG_PRINTEXCEPTION_WIDE_C
    const EXCEPTION_RECORD& record = *event->ExceptionRecord;
    if (record.ExceptionCode != wideText)
        return EXCEPTION_CONTINUE_SEARCH;
    // The length counts the final zero.
    heard.append(reinterpret_cast<const char16_t*>(record.ExceptionInformation[1]),
                 record.ExceptionInformation[0] - 1);
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

std::string debugOutputOf(const std::function<void()>& work) {
    heard.clear();
    void* listener = AddVectoredExceptionHandler(1, listen);
    work();
    RemoveVectoredExceptionHandler(listener);
    std::string narrow;
    for (const char16_t unit : heard) {
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
