#include "pbhost/printable.h"

#include <algorithm>

namespace pbhost {

std::string printable(std::string text) {
    const auto isSteering = [](unsigned char c) {
        return (c < ' ' && c != '\n' && c != '\t') || c == 127;
    };
    std::replace_if(text.begin(), text.end(), isSteering, ' ');
    return text;
}

} // namespace pbhost
