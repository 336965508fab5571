#include "pbhost/sequence/frame_ranges.h"

#include <charconv>
#include <cstdlib>
#include <set>

#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

constexpr std::size_t mostFrames = 1000000;
constexpr long largestNumber = 999999999;

class RangeParser {
public:
    explicit RangeParser(const std::string& text) : text_(text), at_(text.data()) {}

    std::vector<long> run() {
        do
            range();
        while (take(','));
        if (at_ != end())
            fail("write numbers and ranges such as 1-100, 1-100x2 or 120-110, separated by commas");
        return frames_;
    }

private:
    [[noreturn]] void fail(const std::string& why) const {
        throw Failure(ExitCode::Usage, "--frames " + text_ + ": " + why);
    }

    const char* end() const { return text_.data() + text_.size(); }

    bool take(char wanted) {
        if (at_ == end() || *at_ != wanted)
            return false;
        ++at_;
        return true;
    }

    long number() {
        long value = 0;
        const auto [rest, error] = std::from_chars(at_, end(), value);
        if (error != std::errc() || std::abs(value) > largestNumber)
            fail("write numbers and ranges such as 1-100, 1-100x2 or 120-110, separated by commas");
        at_ = rest;
        return value;
    }

    void range() {
        const long first = number();
        const long last = take('-') ? number() : first;
        long step = 1;
        if (at_ != end() && (*at_ == ':' || *at_ == 'y'))
            fail(std::string("'") + *at_ +
                 "' is not known; for every second frame write x2, as in 1-100x2");
        if (take('x') && (step = number()) < 1)
            fail("the step after x is at least 1");
        const long direction = first <= last ? step : -step;
        for (long frame = first; direction > 0 ? frame <= last : frame >= last; frame += direction)
            add(frame);
    }

    void add(long frame) {
        if (!seen_.insert(frame).second)
            return;
        if (frames_.size() == mostFrames)
            fail("more than a million frames");
        frames_.push_back(frame);
    }

    const std::string& text_;
    const char* at_;
    std::vector<long> frames_;
    std::set<long> seen_;
};

} // namespace

std::vector<long> parseFrames(const std::string& text) {
    return RangeParser(text).run();
}

std::string framesText(const std::vector<long>& frames) {
    std::string text;
    for (std::size_t i = 0; i < frames.size();) {
        std::size_t last = i;
        const long step = i + 1 < frames.size() ? frames[i + 1] - frames[i] : 0;
        while (step != 0 && last + 1 < frames.size() && frames[last + 1] - frames[last] == step)
            ++last;
        // Two frames that are not neighbours are shorter as numbers.
        if (last == i + 1 && std::abs(step) != 1)
            last = i;
        text += (text.empty() ? "" : ",") + std::to_string(frames[i]);
        if (last > i) {
            text += "-" + std::to_string(frames[last]);
            if (std::abs(step) != 1)
                text += "x" + std::to_string(std::abs(step));
        }
        i = last + 1;
    }
    return text;
}

} // namespace pbhost
