#include "support/message_text.h"

#include <cstdio>
#include <cstring>

bool expandMessage(MessageText& text, const char* format, std::va_list arguments) {
    text.fill(0);
    if (std::strlen(format) >= text.size())
        return false;
    std::vsnprintf(text.data(), text.size(), format, arguments);
    return true;
}
