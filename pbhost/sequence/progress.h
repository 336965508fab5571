// Reports of the frames that are done, on standard error: a line that is overwritten on a terminal,
// otherwise a line every ten seconds; or a JSON object for each frame.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace pbhost {

class Progress {
public:
    // `kind` is auto, json or none.
    Progress(const std::string& kind, std::size_t total);
    ~Progress(); // ends the terminal's line

    enum class State { Rendered, Skipped, Failed };
    void frameDone(long frame, State state);
    // A line about all frames; not with `none`.
    void finish();

private:
    using Clock = std::chrono::steady_clock;

    std::string line(long frame) const;
    void writeJson(long frame, State state) const;
    double seconds() const;
    double perSecond() const;
    double secondsLeft() const;
    void clearLine();

    const bool isJson_, isQuiet_, isTerminal_;
    const std::size_t total_;
    std::size_t done_ = 0, rendered_ = 0, failed_ = 0;
    const Clock::time_point start_ = Clock::now();
    Clock::time_point lastReport_ = start_;
    bool isLineOpen_ = false;
};

} // namespace pbhost
