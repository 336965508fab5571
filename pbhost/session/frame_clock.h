#pragma once

namespace pbhost {

// Frames and seconds of the composition.
struct FrameClock {
    double framesPerSecond = 24;
    long first = 0; // the frame at second 0

    double secondsOf(long frame) const { return double(frame - first) / framesPerSecond; }
};

} // namespace pbhost
