#include "support/report.h"

#include <array>
#include <cstdarg>
#include <string>

#include "platform/win32.h"
#include "support/message_text.h"
#include "support/utf.h"

namespace {

std::array<ReportHandler, 3> handlers{};

bool isChannel(int channel) {
    return channel >= 0 && static_cast<std::size_t>(channel) < handlers.size();
}

} // namespace

void _printf(const char* format, ...) {
    MessageText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool isExpanded = expandMessage(text, format, arguments);
    va_end(arguments);
    if (!isExpanded) {
        _printf("_printf error ;Message too large\n");
        return;
    }
    std::u16string wide;
    appendWide(text.data(), wide);
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
