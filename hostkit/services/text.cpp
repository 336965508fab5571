#include "hostkit/services/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>

namespace hostkit {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isSurrogate(char32_t code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

struct Lead {
    std::size_t length; // in bytes; 0: not a lead byte
    char32_t bits;
};

Lead readLead(unsigned char byte) {
    if (byte < 0x80)
        return {1, byte};
    if (byte >= 0xC0 && byte < 0xE0)
        return {2, byte & 0x1FU};
    if (byte >= 0xE0 && byte < 0xF0)
        return {3, byte & 0x0FU};
    if (byte >= 0xF0 && byte < 0xF8)
        return {4, byte & 0x07U};
    return {0, 0};
}

// Decodes the first code point and removes it from the text. Surrogates are accepted.
char32_t takeCode(std::string_view& text) {
    constexpr std::array<char32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
    const auto [length, bits] = readLead(static_cast<unsigned char>(text[0]));
    char32_t code = bits;
    std::size_t used = 1;
    for (; used < length && used < text.size(); ++used) {
        const auto byte = static_cast<unsigned char>(text[used]);
        if ((byte & 0xC0U) != 0x80)
            break;
        code = code << 6U | (byte & 0x3FU);
    }
    text.remove_prefix(used);
    const bool isProper = used == length && code >= smallest.at(length) && code <= 0x10FFFF;
    return isProper ? code : replacement;
}

void appendUtf8(std::string& text, char32_t code) {
    const auto tail = [&](unsigned shift) {
        text += static_cast<char>(0x80U | (code >> shift & 0x3FU));
    };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0U | code >> 6U);
        tail(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0U | code >> 12U);
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0U | code >> 18U);
        tail(12);
        tail(6);
        tail(0);
    }
}

void appendUtf16(std::u16string& text, char32_t code) {
    if (code < 0x10000) {
        text += static_cast<char16_t>(code);
        return;
    }
    text += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10U));
    text += static_cast<char16_t>(0xDC00 + (code & 0x3FFU));
}

} // namespace

std::u16string toUtf16(std::string_view utf8) {
    std::u16string result;
    while (!utf8.empty()) {
        const char32_t code = takeCode(utf8);
        appendUtf16(result, isSurrogate(code) ? replacement : code);
    }
    return result;
}

std::string toUtf8(std::u16string_view utf16) {
    std::string result;
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t code = utf16[i];
        const char32_t next = i + 1 < utf16.size() ? utf16[i + 1] : 0;
        if (code >= 0xD800 && code <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10U) + (next - 0xDC00);
            ++i;
        }
        appendUtf8(result, isSurrogate(code) ? replacement : code);
    }
    return result;
}

std::string latin1ToUtf8(std::string_view latin1) {
    std::string result;
    for (const char byte : latin1)
        appendUtf8(result, static_cast<unsigned char>(byte));
    return result;
}

std::string toCesu8(std::string_view utf8) {
    std::string result;
    for (const char16_t unit : toUtf16(utf8))
        appendUtf8(result, unit);
    return result;
}

std::string fromCesu8(std::string_view cesu8) {
    std::u16string units;
    while (!cesu8.empty())
        appendUtf16(units, takeCode(cesu8));
    return toUtf8(units);
}

bool areEqual(std::string_view typed, std::string_view meant) {
    return typed == meant;
}

bool areAlike(std::string_view typed, std::string_view meant) {
    return std::ranges::equal(typed, meant, [](unsigned char a, unsigned char b) {
        return std::tolower(a) == std::tolower(b);
    });
}

} // namespace hostkit
