// Conversion between UTF-8 and UTF-16 for the interfaces that use UTF-16: the operating system's
// calls and some of the host's.
//
// The conversions never fail: bytes that begin no sequence are omitted, and the second half of a
// surrogate pair is not checked. Nothing past the end of a text is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "support/text.h"

inline constexpr std::uint32_t invalidCodePoint = 0xFFFFFFFF;

// The sequence length that a lead byte indicates, 1 to 6; 0 for a continuation byte, -1 for 254 and
// 255.
int utf8SequenceLength(unsigned char byte);

// The code point at the start of text; invalidCodePoint if there is no complete sequence.
std::uint32_t utf8Decode(std::string_view text);

// The longest prefix of at most that many bytes that does not end inside a character.
std::string_view utf8Prefix(std::string_view text, std::size_t bytes);

// Writes 1 to 6 bytes and returns their number; with a null buffer it only counts.
int utf8Encode(std::uint32_t code, char* buffer);

// Appends the conversion to a string of any allocator; returns the number of code points.
template<class Wide>
std::size_t appendWide(std::string_view text, Wide& wide) {
    std::size_t codePoints = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t code = utf8Decode(text.substr(at));
        if (code == invalidCodePoint) {
            ++at;
            continue;
        }
        if (code >= 0x10000)
            wide += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
        wide += static_cast<char16_t>(code < 0x10000 ? code : 0xDC00 + (code & 0x3FF));
        at += static_cast<std::size_t>(utf8SequenceLength(static_cast<unsigned char>(text[at])));
        ++codePoints;
    }
    return codePoints;
}

WideString toWide(std::string_view text);
NarrowString toNarrow(std::u16string_view text);
