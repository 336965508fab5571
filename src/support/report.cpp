#include "support/report.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/win32.h"
#include "support/utf.h"

namespace {

constexpr std::size_t messageSize = 1024;

std::array<ReportHandler, 3> handlers{};

bool isChannel(int channel) {
    return channel >= 0 && static_cast<std::size_t>(channel) < handlers.size();
}

} // namespace

void _printf(const char* format, ...) {
    if (std::strlen(format) >= messageSize) {
        _printf("_printf error ;Message too large\n");
        return;
    }
    std::array<char, messageSize> buffer{};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    va_end(arguments);
    std::u16string wide;
    appendWide(buffer.data(), wide);
    OutputDebugStringW(wide.c_str());
}

void setReportHandler(ReportHandler handler, int channel) {
    if (isChannel(channel))
        handlers[static_cast<std::size_t>(channel)] = handler;
}

void reportMessage(const char* text, int channel) {
    if (isChannel(channel) && handlers[static_cast<std::size_t>(channel)] != nullptr)
        handlers[static_cast<std::size_t>(channel)](text);
}
