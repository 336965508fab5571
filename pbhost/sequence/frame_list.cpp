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

// A picture that changes with the frame, and the frames that it has, in ascending order.
struct Available {
    Available(const FrameFiles& names, std::vector<long> all)
        : files(names), frames(std::move(all)) {}

    bool has(long frame) const { return std::binary_search(frames.begin(), frames.end(), frame); }

    FrameFiles files;
    std::vector<long> frames;
};

std::vector<Available> availableFrames(const SequenceFiles& files,
                                       const std::optional<std::vector<long>>& ofVideo) {
    std::vector<Available> all;
    if (ofVideo)
        all.emplace_back(files.layer, *ofVideo);
    for (const FrameFiles& each : files.sequences)
        all.emplace_back(each, each.pattern->framesOnDisk());
    return all;
}

class FrameLister {
public:
    FrameLister(const SequenceRequest& request, std::vector<Available> pictures)
        : request_(request), pictures_(std::move(pictures)) {}

    std::vector<FrameJob> run() {
        for (const long frame : wantedFrames())
            jobs_.push_back({frame, {}});
        for (const Available& picture : pictures_)
            replaceMissing(picture);
        if (jobs_.empty())
            throw Failure(ExitCode::Usage, "there are no frames to render");
        return std::move(jobs_);
    }

private:
    std::vector<long> wantedFrames() const {
        if (!request_.frames.empty())
            return parseFrames(request_.frames);
        if (pictures_.empty())
            throw Failure(
                ExitCode::Usage,
                "write the frames, as --frames 1-100: no picture of a sequence names them");
        const auto& [files, onDisk] = pictures_.front();
        if (onDisk.empty())
            throw Failure(ExitCode::BadPicture,
                          files.at(1) + ": there is no file of that sequence");
        const std::vector<long> gaps = gapsOf(onDisk);
        if (gaps.empty())
            return onDisk;
        if (request_.missing == "error")
            note("there are no frames " + framesText(gaps) + "; they are left out");
        if (request_.missing == "error" || request_.missing == "skip")
            return onDisk;
        std::vector<long> all = onDisk;
        all.insert(all.end(), gaps.begin(), gaps.end());
        std::sort(all.begin(), all.end());
        return all;
    }

    void replaceMissing(const Available& picture) {
        std::vector<long> missing;
        for (const FrameJob& job : jobs_)
            if (!picture.has(job.frame))
                missing.push_back(job.frame);
        if (missing.empty())
            return;
        report(picture.files, missing);
        const bool isHeld = request_.missing == "hold" && !picture.frames.empty();
        if (request_.missing != "black" && !isHeld) {
            std::erase_if(jobs_, [&](const FrameJob& job) { return !picture.has(job.frame); });
            return;
        }
        for (FrameJob& job : jobs_)
            if (!picture.has(job.frame))
                job.replaced[picture.files.text] =
                    isHeld ? std::optional(heldFrame(picture.frames, job.frame)) : std::nullopt;
    }

    void report(const FrameFiles& files, const std::vector<long>& missing) const {
        const std::string text = "there are no frames " + framesText(missing);
        if (request_.missing == "error")
            throw Failure(ExitCode::BadPicture, files.at(missing.front()) + ": " + text +
                                                    "; see --missing for what can be done instead");
        const std::string subject = pictures_.size() > 1 ? "of " + files.text + " " + text : text;
        note(subject + (request_.missing == "skip"    ? "; they are left out"
                        : request_.missing == "black" ? "; they are black"
                                                      : "; the frames before them are used"));
    }

    const SequenceRequest& request_;
    const std::vector<Available> pictures_;
    std::vector<FrameJob> jobs_;
};

void explainSingleMark(const FrameFiles& files) {
    if (files.pattern && files.pattern->isSingleMark())
        note(files.text + ": a single # stands for four digits");
}

} // namespace

SequenceFiles::SequenceFiles(const RenderPlan& plan)
    : layer(plan.picture), output(plan.request.output) {
    for (const std::string& picture : plan.pictures()) {
        const FrameFiles files(picture);
        if (files.pattern && std::ranges::none_of(sequences, [&](const FrameFiles& other) {
                return other.text == picture;
            }))
            sequences.push_back(files);
    }
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
    return FrameLister(plan.request.sequence, availableFrames(files, available)).run();
}

long firstFrame(const std::vector<FrameJob>& jobs) {
    return std::min_element(jobs.begin(), jobs.end(),
                            [](const FrameJob& a, const FrameJob& b) { return a.frame < b.frame; })
        ->frame;
}

} // namespace pbhost
