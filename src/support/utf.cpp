#include "support/utf.h"

#include <array>

int utf8SequenceLength(unsigned char byte) {
    if (byte < 128)
        return 1;
    if (byte < 192)
        return 0;
    if (byte < 224)
        return 2;
    if (byte < 240)
        return 3;
    if (byte < 248)
        return 4;
    if (byte < 252)
        return 5;
    return byte < 254 ? 6 : -1;
}

std::uint32_t utf8Decode(std::string_view text) {
    if (text.empty())
        return invalidCodePoint;
    const auto lead = static_cast<unsigned char>(text[0]);
    const int length = utf8SequenceLength(lead);
    if (length < 1 || static_cast<std::size_t>(length) > text.size())
        return invalidCodePoint;
    if (length == 1)
        return lead;
    std::uint32_t code = lead & (255U >> (length + 1));
    for (int i = 1; i < length; ++i)
        code =
            (code << 6) | (static_cast<unsigned char>(text[static_cast<std::size_t>(i)]) & 0x3FU);
    return code;
}

std::string_view utf8Prefix(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes)
        return text;
    while (bytes > 0 && utf8SequenceLength(static_cast<unsigned char>(text[bytes])) == 0)
        --bytes;
    return text.substr(0, bytes);
}

int utf8Encode(std::uint32_t code, char* buffer) {
    if (code < 128) {
        if (buffer != nullptr)
            *buffer = static_cast<char>(code);
        return 1;
    }
    // The first codes that need 3, 4, ... bytes, and the marks of lead bytes.
    constexpr std::array<std::uint32_t, 4> limits = {0x800, 0x10000, 0x200000, 0x4000000};
    constexpr std::array<unsigned, 5> leadMarks = {192, 224, 240, 248, 252};
    std::size_t extra = 0;
    while (extra < limits.size() && code >= limits[extra])
        ++extra;
    const int length = static_cast<int>(extra) + 2;
    if (buffer == nullptr)
        return length;
    for (int i = length - 1; i > 0; --i) {
        buffer[i] = static_cast<char>(0x80U | (code & 0x3FU));
        code >>= 6;
    }
    buffer[0] = static_cast<char>(leadMarks[extra] | code);
    return length;
}

WideString toWide(std::string_view text) {
    WideString wide;
    appendWide(text, wide);
    return wide;
}

NarrowString toNarrow(std::u16string_view text) {
    NarrowString narrow;
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::uint32_t code = text[at];
        if (code >= 0xD800 && code <= 0xDFFF) {
            ++at;
            const std::uint32_t second = at < text.size() ? text[at] : 0;
            code = ((code - 55287) << 10) + second;
        }
        std::array<char, 6> bytes{};
        const int length = utf8Encode(code, bytes.data());
        narrow.append(bytes.data(), static_cast<std::size_t>(length));
    }
    return narrow;
}
