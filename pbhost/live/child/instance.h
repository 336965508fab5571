// The effect in a render process: loads a kernel, graph or project, sets the controls, renders.
//
// Each load starts a new session of the module, because the module keeps a loaded file for the
// session. Requests and replies are JSON objects, described at the functions; all functions throw
// Failure.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "pbhost/live/child/display_picture.h"
#include "pbhost/live/child/message.h"
#include "pbhost/sequence/frame_pattern.h"
#include "pbhost/session/frame_clock.h"
#include "pbhost/session/project_file.h"
#include "pbhost/session/scene.h"
#include "pbhost/session/session.h"

namespace pbhost::live {

class Instance {
public:
    explicit Instance(SessionOptions sessionOptions) : options_(std::move(sessionOptions)) {}

    // Takes "file", or "project" (its file); optionally "picture", "width" and "height" of the
    // layer without a picture, "depth" (bits, 0: the picture's), "fps" and "first" (the frame at
    // second 0) for pictures that are sequences. Returns "title", "about", "file",
    // "picture", "width", "height", "depth", "inputs", "seconds", "controls" (controlFacts, with
    // the "default" that the effect has set, and "keyframes"), "warnings". "settings" are those of
    // --set. After a failure the last frame stays, but nothing can be rendered.
    Data load(const Data& request);

    // Takes "controls" (as in a project file) and "layers" (index to file or null), of which those
    // that are not named keep their values, "seconds",
    // "downsample"; "of" ("output" or "input"), "channels", "exposure", "reduce" (a factor of
    // the shown picture's size); "encoding" ("jpeg", "png", or "raw": red, green, blue, 255 for
    // each pixel). Renders if something before "of" changed. Returns the size and times, and the
    // picture as the body.
    Message picture(const Data& request);

    // Takes "x" and "y" in pixels of the last frame. Returns the channels (pixelAt) of the "output"
    // and the "input" there; the latter is at full resolution.
    Data pixel(const Data& request) const;

    // Take what `picture` takes, and "path": write the frame at full resolution, or a project.
    void savePicture(const Data& request);
    void saveProject(const Data& request);

private:
    struct CachedPicture {
        Picture picture;
        std::filesystem::file_time_type written;
    };

    LayerSource source(const std::string& file, std::optional<Depth> depth);
    LayerSource layerSource(const Data& request, const ProjectFile& project);
    void start(LayerSource source);
    std::string fileOfProject(const std::string& name, const ProjectFile& project);
    void setStored(const Data& request, const ProjectFile& project);
    Data loadedAsJson(double seconds, std::size_t inputs);
    std::vector<Data> controlValues();
    Data keyframesAsJson(std::size_t index);
    void set(const Data& request);
    AEGP_LayerIDVal layerOf(const std::string& picture);
    void setLayer(std::size_t index, const Data& file);
    void showFrame(long frame);
    void render(const Data& request, unsigned downsample);
    void requireNoLateError();
    Data animatedValues(double seconds);
    Scene& scene();

    const SessionOptions options_;
    std::optional<Session> session_;
    std::optional<Scene> scene_;
    std::map<std::pair<std::string, int>, CachedPicture> pictures_; // by file and depth, 0: its own
    std::map<std::string, std::pair<std::string, int>> lastFrames_; // keys of sequences' pictures
    std::map<std::string, AEGP_LayerIDVal> layers_;                 // of the scene, by file
    std::shared_ptr<const PictureHeader> layerHeader_;
    FrameClock clock_;
    long frameNumber_ = 0;           // whose pictures of sequences are read
    std::optional<long> shownFrame_; // that all layers show; nothing: reading failed
    hostkit::World frame_;
    std::string rendered_;          // the request that the frame answers; empty: none
    bool isFrameComplete_ = false;  // a frame was checked since the load
    double renderMilliseconds_ = 0; // of the frame
};

} // namespace pbhost::live
