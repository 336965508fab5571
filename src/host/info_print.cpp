#include "host/info_print.h"

#include <cstdarg>
#include <cstring>

#include "host/host_services.h"
#include "support/message_text.h"

namespace {

// Ends the text at its first line feed; what follows, or null if there is none.
char* cutLine(char* text) {
    char* end = std::strchr(text, '\n');
    if (end == nullptr)
        return nullptr;
    *end = 0;
    return end + 1;
}

} // namespace

PF_Err dprintf(SPBasicSuite* basic, const char* format, ...) {
    MessageText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool isExpanded = expandMessage(text, format, arguments);
    va_end(arguments);
    if (!isExpanded)
        return dprintf(basic, "dprintf error ;Message too large\n");
    char* line2 = cutLine(text.data());
    const char* line3 = line2 == nullptr ? nullptr : cutLine(line2);
    return infoPanel3(basic, text.data(), line2, line3);
}
