// The frames that a command renders.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "pbhost/render/render_plan.h"
#include "pbhost/sequence/frame_pattern.h"

namespace pbhost {

struct FrameJob {
    // The frame whose picture is read from these files: another one where that of the frame is
    // missing and the one before is held. Nothing: it is missing, and black.
    std::optional<long> sourceIn(const std::string& files) const {
        const auto found = replaced.find(files);
        return found == replaced.end() ? std::optional(frame) : found->second;
    }

    long frame = 0;
    // By the text of the files: what replaces the missing pictures of this frame.
    std::map<std::string, std::optional<long>> replaced;
};

// The pictures of a plan that change from frame to frame.
struct SequenceFiles {
    explicit SequenceFiles(const RenderPlan& plan);

    FrameFiles layer;  // the text is empty if there is no picture
    FrameFiles output; // without a pattern for a video
    // The pictures with a pattern, each once, that of the layer first. The files of the first one
    // tell which frames there are.
    std::vector<FrameFiles> sequences;
};

// Whether the request is for frames.
bool isSequence(const RenderRequest& request);

// The frames of --frames, or those on disk, or those that are `available` in a video. Gaps and how
// they are treated are noted on standard error. Throws Failure: Usage if there are none, BadPicture
// for missing ones that are to be errors.
std::vector<FrameJob> listFrames(const RenderPlan& plan, const SequenceFiles& files,
                                 const std::optional<std::vector<long>>& available);

// The frames that the request names, for the frame at second 0.
long firstFrame(const std::vector<FrameJob>& jobs);

} // namespace pbhost
