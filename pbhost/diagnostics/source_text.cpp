#include "pbhost/diagnostics/source_text.h"

#include <algorithm>

namespace pbhost {

SourceText::SourceText(std::string_view whole) : text(whole), starts_{0} {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isFirstOfTwo = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (text[i] == '\n' || (text[i] == '\r' && !isFirstOfTwo))
            starts_.push_back(i + 1);
    }
}

Place SourceText::placeOf(std::size_t offset) const {
    offset = std::min(offset, text.size());
    const auto behind = std::upper_bound(starts_.begin(), starts_.end(), offset);
    return {static_cast<std::size_t>(behind - starts_.begin()), offset - behind[-1] + 1};
}

std::string_view SourceText::line(std::size_t number) const {
    if (number == 0 || number > starts_.size())
        return {};
    std::string_view line = text.substr(starts_[number - 1]);
    return line.substr(0, line.find_first_of("\r\n"));
}

std::size_t SourceText::offsetOfLine(std::size_t number) const {
    return number == 0 || number > starts_.size() ? text.size() : starts_[number - 1];
}

bool isNameByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

std::string_view wordAt(std::string_view text, std::size_t offset) {
    std::size_t begin = std::min(offset, text.size()), end = begin;
    while (end < text.size() && isNameByte(text[end]))
        ++end;
    while (end > begin && begin > 0 && isNameByte(text[begin - 1]))
        --begin;
    return text.substr(begin, end - begin);
}

std::size_t findWord(std::string_view text, std::string_view word, std::size_t from) {
    for (std::size_t at = text.find(word, from); at != std::string_view::npos;
         at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if ((at == 0 || !isNameByte(text[at - 1])) &&
            (end == text.size() || !isNameByte(text[end])))
            return at;
    }
    return std::string_view::npos;
}

std::size_t utf16Length(std::string_view line, std::size_t bytes) {
    std::size_t units = 0;
    for (const char c : line.substr(0, bytes)) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isContinuation = byte >= 0x80 && byte < 0xC0;
        units += isContinuation ? 0 : byte >= 0xF0 ? 2 : 1;
    }
    return units;
}

} // namespace pbhost
