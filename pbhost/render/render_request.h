// What the command line asks of a render, unchecked except by the parser of the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pbhost/pictures/picture.h"
#include "pbhost/session/load_check.h"

namespace pbhost {

// How pictures are read and written.
struct PictureRequest {
    std::string alpha; // straight, premultiplied, as-is; empty: as the first picture has it
    std::optional<ValueType> type;
    std::string compression;
    std::optional<int> quality;
    std::string channels; // prefix of the channels of the layer's picture
    Colours colours;
    std::string format; // of standard output, an extension without the dot
    bool isNoClobber = false;
};

// Which frames are rendered, and how the work is reported.
struct SequenceRequest {
    std::string frames;            // such as 1-10x2,20; empty: those on disk
    std::optional<long> first;     // the frame at second 0; default: the first of the frames
    std::string fps;               // empty: the file's own, or 24
    std::string missing = "error"; // error, skip, black, hold
    std::string memory;            // such as 2G; empty: a quarter of the machine's
    std::string progress = "auto"; // auto, json, none
    std::string codec;             // of a video; empty: by the extension
    bool isKeepingGoing = false;
    bool isResumed = false;
    bool isDryRun = false;
};

struct RenderRequest {
    std::vector<std::string> files; // .pbk or .pbg, in the order of the effects; or by the project
    std::string project;            // project to open
    std::vector<std::string> inputs;
    std::string output;
    std::vector<std::string> layers;   // [EFFECT:]CONTROL=PICTURE
    std::vector<std::string> settings; // [EFFECT:]CONTROL=V[,V...]
    std::vector<std::string> keys;     // [EFFECT:]CONTROL@FRAME=[hold:]V[,V...]
    std::string downsample = "1";      // X[,Y]: divisor of the resolution
    std::optional<Depth> depth;        // default: the depth of the project or of the first picture
    std::string time;                  // seconds; empty: the project's time, or 0
    std::string size;                  // WIDTHxHEIGHT if there is no picture; empty: 640x360
    std::string save;                  // project to write; may be empty
    FindingOptions findings;           // about the kernels and graphs
    PictureRequest pictures;
    SequenceRequest sequence;
};

} // namespace pbhost
