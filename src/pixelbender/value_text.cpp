// Parses values in the syntax of graph files: a plain list, unlike in the kernel language.

#include "pixelbender/graph_reader.h"
#include "support/numbers.h"

namespace {

// Parses numbers with a comma immediately after each but the last.
template<class Number>
void scanList(const char* text, int count, bool (*scan)(const char*&, Number&),
              std::array<Number, 16>& values) {
    for (int i = 0; i < count; ++i) {
        if (i > 0 && *text++ != ',')
            return;
        if (!scan(text, values[static_cast<std::size_t>(i)]))
            return;
    }
}

// Only the last value may have blanks before it.
void scanTruths(std::string_view text, int count, std::array<std::uint8_t, 16>& truths) {
    constexpr std::string_view separators = "\t\r\n ,";
    for (int i = 0; i + 1 < count; ++i) {
        const std::size_t end = text.find_first_of(separators);
        if (end == 0)
            return;
        truths[static_cast<std::size_t>(i)] = text.substr(0, end) == "true";
        if (end == std::string_view::npos || text[end] != ',')
            return;
        text.remove_prefix(end + 1);
    }
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const std::size_t start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos)
        return;
    text.remove_prefix(start);
    truths[static_cast<std::size_t>(count - 1)] =
        text.substr(0, text.find_first_of(blanks)) == "true";
}

} // namespace

pbValue parseValueText(const char* text, pbElementType type) {
    pbValue value;
    if (text == nullptr)
        return value;
    const int count = componentCount(type);
    switch (componentBase(type)) {
    case pbScalarInt:
        scanList(text, count, scanInteger, value.ints);
        break;
    case pbScalarFloat:
        scanList(text, count, scanFloat, value.floats);
        break;
    case pbScalarBool:
        if (count == 1)
            value.bytes[0] = std::string_view(text) == "true";
        else
            scanTruths(text, count, value.bytes);
        break;
    case pbScalarNone:
        break;
    }
    return value;
}
