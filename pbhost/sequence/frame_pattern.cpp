#include "pbhost/sequence/frame_pattern.h"

#include <algorithm>
#include <charconv>

#include "pbhost/process/failure.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

constexpr unsigned mostDigits = 20;

struct Place {
    std::size_t begin = 0, end = 0;
    unsigned digits = 0;
    bool isSingleMark = false;
};

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// The place that ends before `end`, if there is one: a run of marks, or "%04d".
std::optional<Place> placeBefore(const std::string& name, std::size_t end) {
    const char last = name[end - 1];
    if (last == '#' || last == '@') {
        std::size_t begin = end;
        while (begin > 0 && name[begin - 1] == last)
            --begin;
        Place place{begin, end, static_cast<unsigned>(end - begin),
                    last == '#' && end - begin == 1};
        if (place.isSingleMark)
            place.digits = 4;
        if (begin > 0 && name[begin - 1] == '[' && end < name.size() && name[end] == ']')
            place = {begin - 1, end + 1, place.digits, place.isSingleMark};
        return place;
    }
    if (last != 'd')
        return std::nullopt;
    std::size_t begin = end - 1;
    while (begin > 0 && isDigit(name[begin - 1]))
        --begin;
    if (begin == 0 || name[begin - 1] != '%')
        return std::nullopt;
    Place place{begin - 1, end, 0, false};
    const auto [rest, error] =
        std::from_chars(name.data() + begin, name.data() + end - 1, place.digits);
    if (error == std::errc::result_out_of_range)
        place.digits = mostDigits + 1;
    return place;
}

std::optional<Place> lastPlace(const std::string& name) {
    for (std::size_t end = name.size(); end > 0; --end)
        if (const auto place = placeBefore(name, end))
            return place;
    return std::nullopt;
}

} // namespace

std::optional<FramePattern> FramePattern::parse(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    const std::string name = path.substr(start);
    const auto place = lastPlace(name);
    std::error_code ignored;
    if (!place || fs::is_regular_file(path, ignored))
        return std::nullopt;
    if (place->digits > mostDigits)
        throw Failure(ExitCode::Usage, path + ": a frame number has at most 20 digits");
    FramePattern pattern;
    pattern.folder_ = path.substr(0, start);
    pattern.before_ = name.substr(0, place->begin);
    pattern.after_ = name.substr(place->end);
    pattern.digits_ = place->digits;
    pattern.isSingleMark_ = place->isSingleMark;
    return pattern;
}

std::string FramePattern::path(long frame) const {
    std::string digits = std::to_string(frame);
    const std::size_t sign = frame < 0 ? 1 : 0;
    if (digits.size() < digits_)
        digits.insert(sign, digits_ - digits.size(), '0');
    return folder_ + before_ + digits + after_;
}

std::optional<long> FramePattern::frameOf(const std::string& name) const {
    if (name.size() <= before_.size() + after_.size() || !name.starts_with(before_) ||
        !name.ends_with(after_))
        return std::nullopt;
    const char* const begin = name.data() + before_.size();
    const char* const end = name.data() + name.size() - after_.size();
    long frame = 0;
    const auto [rest, error] = std::from_chars(begin, end, frame);
    // Numbers that are padded otherwise belong to another sequence.
    return error == std::errc() && rest == end && path(frame) == folder_ + name
               ? std::optional(frame)
               : std::nullopt;
}

std::vector<long> FramePattern::framesOnDisk() const {
    std::vector<long> frames;
    std::error_code error;
    for (fs::directory_iterator entry(folder(), error), end; !error && entry != end;
         entry.increment(error))
        if (const auto frame = frameOf(entry->path().filename().string()))
            frames.push_back(*frame);
    if (error)
        throw Failure(ExitCode::BadPicture, folder().string() + ": " + error.message());
    std::sort(frames.begin(), frames.end());
    return frames;
}

fs::path FramePattern::folder() const {
    return folder_.empty() ? fs::path(".") : fs::path(folder_);
}

} // namespace pbhost
