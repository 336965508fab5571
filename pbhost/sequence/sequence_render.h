// Renders the frames of a sequence in one session of the module: pictures are read ahead and
// written behind by threads of a pool, while the session's thread renders.
#pragma once

#include <memory>
#include <string>

#include "pbhost/render/frame_renderer.h"
#include "pbhost/sequence/frame_io.h"
#include "pbhost/sequence/frame_list.h"
#include "pbhost/sequence/worker_pool.h"

namespace pbhost {

class SequenceRender {
public:
    // Lists the frames, and starts to read the first one. Throws Failure. The request must outlive
    // the object.
    explicit SequenceRender(const RenderRequest& request);
    ~SequenceRender();

    const std::vector<FrameJob>& jobs() const { return jobs_; }
    std::string fileOf(long frame) const { return sink_->fileOf(frame); } // the output
    long frameAtZero() const { return plan_.clock.first; }                // at second 0

    // The frames and their files, one line each.
    std::string describe() const;

    // Renders and writes the frames in their order; what was complete before a failure stays.
    // Throws Failure; with --keep-going after the last frame, naming those that failed. With
    // --dry-run only returns the lines of `describe`, without the frames that are complete.
    std::string run(Session& session);

private:
    struct Worker; // the loop over the frames

    void createOutput();
    // Takes the rate of the pictures unless the request or the project has one.
    void useRate(double framesPerSecond);
    std::string lineOf(const FrameJob& job) const;
    // The file of the layer's picture, which changes with the frame; nothing: it is black.
    std::optional<std::string> layerFileOf(const FrameJob& job) const;
    // The layer's source for loading the effects: the first picture that there is.
    LayerSource readFirst();

    const RenderRequest& request_;
    RenderPlan plan_;
    SequenceFiles files_;
    std::unique_ptr<FrameSource> source_; // null: a layer without pictures, or with one picture
    std::unique_ptr<FrameSink> sink_;
    std::vector<FrameJob> jobs_;
    std::unique_ptr<WorkerPool> readers_, writers_;
    std::future<LayerSource> first_;
};

} // namespace pbhost
