// Lines and columns of a text: a line ends at LF, CR, or CR LF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace pbhost {

// Both from 1, the column in bytes; 0 where it is not known.
struct Place {
    std::size_t line = 0;
    std::size_t column = 0;
};

class SourceText {
public:
    // The text must outlive the object.
    explicit SourceText(std::string_view whole);

    // The place of an offset; that of the end for an offset behind the text.
    Place placeOf(std::size_t offset) const;

    // A line without its end; empty for a line that does not exist.
    std::string_view line(std::size_t number) const;

    // The offset of a line's first byte; of the text's end for a line that does not exist.
    std::size_t offsetOfLine(std::size_t number) const;

    std::size_t lines() const { return starts_.size(); }

    const std::string_view text;

private:
    std::vector<std::size_t> starts_; // of each line
};

// Whether a byte can be part of a name: a letter, a digit or '_'.
bool isNameByte(char c);

// The name that begins or continues at an offset; empty if there is none.
std::string_view wordAt(std::string_view text, std::size_t offset);

// The offset of the next occurrence of a name that is not part of a longer one; npos: none.
std::size_t findWord(std::string_view text, std::string_view word, std::size_t from = 0);

// The length of a line's first `bytes` bytes in UTF-16 code units, as editors count. Bytes that are
// not UTF-8 count as one each.
std::size_t utf16Length(std::string_view line, std::size_t bytes);

} // namespace pbhost
