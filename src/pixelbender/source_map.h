// Where the pieces of a rewritten text come from: offsets of the rewritten text and of the source.
//
// The readers fill a map only if they are given one; the text is the same with and without it.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

class SourceMap {
public:
    // A piece that was copied without a change; offsets and length in bytes.
    struct Stretch {
        std::size_t at; // in the rewritten text
        std::size_t source;
        std::size_t length;
    };

    // Adds a piece behind all others. Pieces that are adjacent in both texts become one.
    void add(std::size_t at, std::size_t source, std::size_t length);

    // The source of a byte; nothing for one that was not copied.
    std::optional<std::size_t> sourceOf(std::size_t at) const;

    // In the order of the rewritten text, without overlaps.
    const std::vector<Stretch>& stretches() const { return stretches_; }

private:
    std::vector<Stretch> stretches_;
};
