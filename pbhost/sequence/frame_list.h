// The frames that a command renders.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pbhost/render/render_plan.h"
#include "pbhost/sequence/frame_pattern.h"

namespace pbhost {

struct FrameJob {
    long frame = 0;
    // The frame whose picture is read: another one where that of the frame is missing and the one
    // before is held. Nothing: it is missing, and black.
    std::optional<long> source;
};

// The pictures of a plan that change from frame to frame.
struct SequenceFiles {
    explicit SequenceFiles(const RenderPlan& plan);

    FrameFiles layer;  // the text is empty if there is no picture
    FrameFiles output; // without a pattern for a video
    // The first pattern among the pictures; its files tell which frames there are.
    std::optional<FramePattern> leading;
};

// Whether the plan is one of several frames.
bool isSequence(const RenderRequest& request);

// The frames of --frames, or those on disk; `onDisk` are those. Gaps and how they are treated are
// noted on standard error. Throws Failure: Usage if there are none, BadPicture for missing ones
// that are to be errors.
std::vector<FrameJob> listFrames(const RenderPlan& plan, const SequenceFiles& files);

// The frames that the request names, for the frame at second 0.
long firstFrame(const std::vector<FrameJob>& jobs);

} // namespace pbhost
