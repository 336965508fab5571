// A render that is divided into chunks of frames, each of which is one command.
#pragma once

#include <string>
#include <vector>

#include "pbhost/render/render_request.h"

namespace pbhost {

struct FarmRequest {
    std::vector<std::string> arguments; // those of the command `render`, without its name
    RenderRequest render;               // the same, parsed
    long chunk = 25;                    // frames
    std::size_t mostChunks = 1000;      // longer chunks are made if there would be more
};

struct FarmJob {
    struct Chunk {
        std::vector<long> frames;
        std::vector<std::string> files; // of the frames
        std::string text;               // for --frames
    };

    // Lists the frames. Throws Failure. A note says so if the chunks are longer than asked for.
    explicit FarmJob(const FarmRequest& request);

    // The command of a chunk as words for a shell; `frames` is the word for its frames.
    std::string command(const std::string& frames) const;
    std::size_t frameCount() const;

    std::vector<Chunk> chunks;
    std::string outputFolder; // absolute

private:
    std::vector<std::string> words_; // without the frames
    long first_ = 0;                 // at second 0
};

// The command `submit print`: the commands, one a line.
std::string printCommands(const FarmRequest& request);

} // namespace pbhost
