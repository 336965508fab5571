#include "pbhost/sequence/frame_list.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"
#include "pbhost/sequence/frame_ranges.h"
#include "pbhost/video/video.h"

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
    FrameLister(const RenderPlan& plan, const SequenceFiles& files,
                const std::optional<std::vector<long>>& available)
        : request_(plan.request.sequence), isListed_(files.leading || available),
          leading_(files.leading), name_(files.layer.text),
          onDisk_(available       ? *available
                  : files.leading ? files.leading->framesOnDisk()
                                  : std::vector<long>()) {}

    std::vector<FrameJob> run() {
        for (const long frame : wantedFrames())
            if (!isListed_ || isOnDisk(frame))
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
        if (!isListed_)
            throw Failure(
                ExitCode::Usage,
                "write the frames, as --frames 1-100: no picture of a sequence names them");
        if (onDisk_.empty())
            throw Failure(ExitCode::BadPicture, nameOf(1) + ": there is no file of that sequence");
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

    std::string nameOf(long frame) const { return leading_ ? leading_->path(frame) : name_; }

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
            throw Failure(ExitCode::BadPicture, nameOf(missing_.front()) + ": " + text +
                                                    "; see --missing for what can be done instead");
        note(text + (request_.missing == "skip"    ? "; they are left out"
                     : request_.missing == "black" ? "; they are black"
                                                   : "; the frames before them are used"));
    }

    const SequenceRequest& request_;
    const bool isListed_; // whether it is known which frames there are
    const std::optional<FramePattern> leading_;
    const std::string name_; // of a video
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
    const auto isOfFrames = [](const std::string& name) {
        return isVideo(name) || FramePattern::parse(name);
    };
    return !request.sequence.frames.empty() || isOfFrames(request.output) ||
           (!request.inputs.empty() && isOfFrames(request.inputs.front()));
}

std::vector<FrameJob> listFrames(const RenderPlan& plan, const SequenceFiles& files,
                                 const std::optional<std::vector<long>>& available) {
    return FrameLister(plan, files, available).run();
}

long firstFrame(const std::vector<FrameJob>& jobs) {
    return std::min_element(jobs.begin(), jobs.end(),
                            [](const FrameJob& a, const FrameJob& b) { return a.frame < b.frame; })
        ->frame;
}

} // namespace pbhost
