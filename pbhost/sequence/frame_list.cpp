#include "pbhost/sequence/frame_list.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"
#include "pbhost/sequence/frame_ranges.h"

namespace pbhost {

namespace {

void note(const std::string& text) {
    std::cerr << "pbhost: note: " << printable(text) << "\n";
}

std::vector<long> gapsOf(const std::vector<long>& frames) {
    constexpr std::size_t mostGaps = 100000;
    std::vector<long> gaps;
    for (std::size_t i = 1; i < frames.size(); ++i)
        for (long frame = frames[i - 1] + 1; frame < frames[i] && gaps.size() < mostGaps; ++frame)
            gaps.push_back(frame);
    return gaps;
}

// The frame before, or else after, a missing one.
long heldFrame(const std::vector<long>& onDisk, long frame) {
    const auto next = std::lower_bound(onDisk.begin(), onDisk.end(), frame);
    return next == onDisk.begin() ? *next : *std::prev(next);
}

class FrameLister {
public:
    FrameLister(const RenderPlan& plan, const SequenceFiles& files)
        : request_(plan.request.sequence), files_(files),
          onDisk_(files.leading ? files.leading->framesOnDisk() : std::vector<long>()) {}

    std::vector<FrameJob> run() {
        for (const long frame : wantedFrames())
            if (!files_.leading || isOnDisk(frame))
                jobs_.push_back({frame, frame});
            else
                addMissing(frame);
        if (!missing_.empty())
            reportMissing();
        if (jobs_.empty())
            throw Failure(ExitCode::Usage, "there are no frames to render");
        return std::move(jobs_);
    }

private:
    std::vector<long> wantedFrames() const {
        if (!request_.frames.empty())
            return parseFrames(request_.frames);
        if (!files_.leading)
            throw Failure(
                ExitCode::Usage,
                "write the frames, as --frames 1-100: no picture of a sequence names them");
        if (onDisk_.empty())
            throw Failure(ExitCode::BadPicture,
                          files_.leading->path(1) + ": there is no file of that sequence");
        const std::vector<long> gaps = gapsOf(onDisk_);
        if (gaps.empty())
            return onDisk_;
        if (request_.missing == "error")
            note("there are no frames " + framesText(gaps) + "; they are left out");
        if (request_.missing == "error" || request_.missing == "skip")
            return onDisk_;
        std::vector<long> all = onDisk_;
        all.insert(all.end(), gaps.begin(), gaps.end());
        std::sort(all.begin(), all.end());
        return all;
    }

    bool isOnDisk(long frame) const {
        return std::binary_search(onDisk_.begin(), onDisk_.end(), frame);
    }

    void addMissing(long frame) {
        missing_.push_back(frame);
        if (request_.missing == "black")
            jobs_.push_back({frame, std::nullopt});
        else if (request_.missing == "hold" && !onDisk_.empty())
            jobs_.push_back({frame, heldFrame(onDisk_, frame)});
    }

    void reportMissing() const {
        const std::string text = "there are no frames " + framesText(missing_);
        if (request_.missing == "error")
            throw Failure(ExitCode::BadPicture, files_.leading->path(missing_.front()) + ": " +
                                                    text +
                                                    "; see --missing for what can be done instead");
        note(text + (request_.missing == "skip"    ? "; they are left out"
                     : request_.missing == "black" ? "; they are black"
                                                   : "; the frames before them are used"));
    }

    const SequenceRequest& request_;
    const SequenceFiles& files_;
    const std::vector<long> onDisk_;
    std::vector<FrameJob> jobs_;
    std::vector<long> missing_;
};

void explainSingleMark(const FrameFiles& files) {
    if (files.pattern && files.pattern->isSingleMark())
        note(files.text + ": a single # stands for four digits");
}

} // namespace

SequenceFiles::SequenceFiles(const RenderPlan& plan)
    : layer(plan.picture), output(plan.request.output), leading(layer.pattern) {
    for (const std::string& picture : plan.extraPictures)
        if (!leading)
            leading = FramePattern::parse(picture);
    explainSingleMark(layer);
    explainSingleMark(output);
}

bool isSequence(const RenderRequest& request) {
    if (!request.sequence.frames.empty() || FramePattern::parse(request.output))
        return true;
    return !request.inputs.empty() && FramePattern::parse(request.inputs.front());
}

std::vector<FrameJob> listFrames(const RenderPlan& plan, const SequenceFiles& files) {
    return FrameLister(plan, files).run();
}

long firstFrame(const std::vector<FrameJob>& jobs) {
    return std::min_element(jobs.begin(), jobs.end(),
                            [](const FrameJob& a, const FrameJob& b) { return a.frame < b.frame; })
        ->frame;
}

} // namespace pbhost
