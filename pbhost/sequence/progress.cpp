#include "pbhost/sequence/progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <iostream>

#include "pbhost/files/json_text.h"

namespace pbhost {

namespace {

std::string withOneDigit(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%ld.%ld", std::lround(number * 10) / 10,
                  std::lround(number * 10) % 10);
    return text;
}

} // namespace

Progress::Progress(const std::string& kind, std::size_t total)
    : isJson_(kind == "json"), isQuiet_(kind == "none"), isTerminal_(::isatty(STDERR_FILENO) == 1),
      total_(total) {}

Progress::~Progress() {
    if (isLineOpen_)
        std::cerr << "\n";
}

void Progress::frameDone(long frame, State state) {
    constexpr auto pause = std::chrono::seconds(10);
    ++done_;
    rendered_ += state == State::Rendered ? 1 : 0;
    failed_ += state == State::Failed ? 1 : 0;
    if (isJson_)
        return writeJson(frame, state);
    if (isQuiet_)
        return;
    if (isTerminal_) {
        std::cerr << "\r\033[K" << line(frame) << std::flush;
        isLineOpen_ = true;
    } else if (Clock::now() - lastReport_ >= pause) {
        std::cerr << "pbhost: " << line(frame) << "\n";
        lastReport_ = Clock::now();
    }
}

void Progress::finish() {
    clearLine();
    if (isQuiet_ || isJson_)
        return;
    const std::size_t skipped = done_ - rendered_ - failed_;
    std::cerr << "pbhost: " << rendered_ << " of " << total_ << " frames rendered in "
              << withOneDigit(seconds()) << " s";
    if (rendered_ > 0)
        std::cerr << ", " << withOneDigit(perSecond()) << " per second";
    if (skipped > 0)
        std::cerr << "; " << skipped << " were complete already";
    std::cerr << "\n";
}

void Progress::clearLine() {
    if (isLineOpen_)
        std::cerr << "\r\033[K";
    isLineOpen_ = false;
}

std::string Progress::line(long frame) const {
    return "frame " + std::to_string(frame) + ", " + std::to_string(done_) + " of " +
           std::to_string(total_) + ", " + withOneDigit(perSecond()) + " per second, " +
           std::to_string(std::lround(secondsLeft())) + " s left";
}

void Progress::writeJson(long frame, State state) const {
    const char* name = state == State::Rendered  ? "rendered"
                       : state == State::Skipped ? "skipped"
                                                 : "failed";
    const Json json = {{"frame", frame},
                       {"state", name},
                       {"done", done_},
                       {"total", total_},
                       {"perSecond", perSecond()},
                       {"secondsLeft", secondsLeft()}};
    std::cerr << json.dump() + "\n" << std::flush;
}

double Progress::seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

// Frames that were complete take no time.
double Progress::perSecond() const {
    return rendered_ == 0 ? 0 : double(rendered_) / std::max(seconds(), 1e-3);
}

double Progress::secondsLeft() const {
    return rendered_ == 0 ? 0 : double(total_ - done_) / perSecond();
}

} // namespace pbhost
