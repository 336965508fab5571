// The name of a sequence's files: text with the place of the frame's number, such as
// "shot.%04d.exr", "shot.####.exr", "shot.[####].exr" or "shot.@@@@.exr". Each # or @ of a run is a
// digit; a single # stands for four.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pbhost {

class FramePattern {
public:
    // Nothing if the file's name has no place for a number, or if there is a file of exactly that
    // name. Only the last component of the path is searched, and its last place taken. Throws
    // Failure (Usage) for more than 20 digits.
    static std::optional<FramePattern> parse(const std::string& path);

    // The path of a frame. Shorter numbers are padded with zeros, longer ones are not cut.
    std::string path(long frame) const;
    // The frame of a file's name without its folder; nothing if `path` does not give that name.
    std::optional<long> frameOf(const std::string& name) const;

    // The frames on disk in ascending order. Throws Failure (BadPicture) if the folder cannot be
    // read.
    std::vector<long> framesOnDisk() const;

    std::filesystem::path folder() const;
    bool isSingleMark() const { return isSingleMark_; } // a single #

private:
    std::string folder_; // with the separator at its end, or empty
    std::string before_, after_;
    unsigned digits_ = 0;
    bool isSingleMark_ = false;
};

// The files of a layer's picture: a pattern, or always the same file.
struct FrameFiles {
    explicit FrameFiles(const std::string& name) : text(name), pattern(FramePattern::parse(name)) {}

    std::string at(long frame) const { return pattern ? pattern->path(frame) : text; }

    std::string text; // as given
    std::optional<FramePattern> pattern;
};

} // namespace pbhost
