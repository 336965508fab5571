// Videos, read and written by the programs ffprobe and ffmpeg through pipes.
#pragma once

#include <memory>
#include <string>

#include "pbhost/sequence/frame_io.h"

namespace pbhost {

// Whether the name has the extension of a video: .mov, .mp4, .mkv, .avi, .mxf or .webm.
bool isVideo(const std::string& path);

struct VideoFacts {
    unsigned width = 0, height = 0; // as it is shown, after its rotation
    double framesPerSecond = 0;
    long frames = 0; // numbered from 1
    bool hasAlpha = false;
    bool isDeep = false; // more than 8 bits
    std::string matrix;  // of its colours, as ffmpeg names it
    bool isFullRange = false;
};

// Throws Failure: BadPicture for a file that is not a video, RenderFailed without the program.
VideoFacts probeVideo(const std::string& path);

// Frames must be read in ascending order.
std::unique_ptr<FrameSource> openVideo(const std::string& path, const VideoFacts& facts);

// `codec` is h264 or prores; empty: by the extension, ProRes for .mov. `quality` is the constant
// rate factor of H.264, 0 to 51. Throws Failure (Usage) for what does not fit.
std::unique_ptr<FrameSink> createVideo(const std::string& path, const std::string& codec,
                                       std::optional<int> quality, double framesPerSecond);

} // namespace pbhost
