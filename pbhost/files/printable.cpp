#include "pbhost/files/printable.h"

#include <algorithm>

#include "hostkit/services/text.h"

namespace pbhost {

std::string printable(std::string text) {
    const auto isSteering = [](unsigned char c) {
        return (c < ' ' && c != '\n' && c != '\t') || c == 127;
    };
    std::replace_if(text.begin(), text.end(), isSteering, ' ');
    return text;
}

bool isUtf8(std::string_view text) {
    return hostkit::toUtf8(hostkit::toUtf16(text)) == text;
}

} // namespace pbhost
