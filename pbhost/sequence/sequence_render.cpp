#include "pbhost/sequence/sequence_render.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <deque>
#include <filesystem>
#include <iostream>
#include <map>
#include <numeric>
#include <thread>

#include "pbhost/files/printable.h"
#include "pbhost/pictures/picture_formats.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/sequence/fingerprint.h"
#include "pbhost/sequence/frame_ranges.h"
#include "pbhost/sequence/progress.h"
#include "pbhost/session/places.h"
#include "pbhost/video/video.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

unsigned threadCount() {
    return std::max(std::thread::hardware_concurrency(), 1U);
}

// Bytes for pictures: the option's, such as 2G or 500M, or a quarter of the machine's memory.
std::size_t memoryLimit(const std::string& text) {
    if (text.empty())
        return std::size_t(::sysconf(_SC_PHYS_PAGES)) * std::size_t(::sysconf(_SC_PAGE_SIZE)) / 4;
    std::size_t number = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const std::string unit(rest, text.data() + text.size());
    const std::size_t shift = unit == "G" ? 30 : unit == "M" ? 20 : unit == "K" ? 10 : 64;
    if (error != std::errc() || number == 0 || shift == 64 || number >> (63 - shift) != 0)
        throw Failure(ExitCode::Usage, "--memory " + text + ": write a size such as 2G or 500M");
    return number << shift;
}

// Frames that may be in memory at once, from the first read to the last written.
std::size_t framesAtOnce(std::size_t memory, std::size_t bytesOfFrame) {
    const std::size_t most = 2 * std::size_t{threadCount()} + 2;
    return std::clamp<std::size_t>(memory / std::max<std::size_t>(bytesOfFrame, 1), 1, most);
}

// A frame of the first one's size, without pixels: transparent, or opaque black if the pictures
// have no alpha.
LayerSource blackFrame(const Picture& like, const std::string& files) {
    const bool isOpaque = like.header != nullptr && !like.header->hasAlpha;
    Picture black = isOpaque ? opaqueBlack(like.width, like.height, like.depth)
                             : emptyPicture(like.width, like.height, like.depth);
    black.header = like.header;
    return {std::move(black), fs::absolute(files).string()};
}

} // namespace

SequenceRender::SequenceRender(const RenderRequest& request)
    : request_(request), plan_(request), files_(plan_) {
    const bool isVideoWritten = isVideo(request.output);
    if (!files_.output.pattern && !isVideoWritten)
        throw Failure(ExitCode::Usage, request.output +
                                           ": several frames need a name with a place for their "
                                           "number, such as out.####.png");
    plan_.isSequence = true;
    std::optional<std::vector<long>> available;
    if (isVideo(plan_.picture)) {
        const VideoFacts facts = probeVideo(plan_.picture);
        available.emplace(std::size_t(facts.frames));
        std::iota(available->begin(), available->end(), 1L);
        source_ = openVideo(plan_.picture, facts);
        useRate(facts.framesPerSecond);
    }
    jobs_ = listFrames(plan_, files_, available);
    if (!request.sequence.first && !plan_.project.clock)
        plan_.clock.first = firstFrame(jobs_);
    if (files_.layer.pattern)
        source_ = std::make_unique<PictureFiles>(files_.layer);
    createOutput();
    if (request.sequence.isDryRun && !request.sequence.isResumed)
        return;
    const bool isSerialSource = source_ != nullptr && source_->isSerial();
    readers_ = std::make_unique<WorkerPool>(isSerialSource ? 1 : threadCount());
    writers_ = std::make_unique<WorkerPool>(isVideoWritten ? 1 : threadCount());
    first_ = readers_->submit([this] { return readFirst(); });
}

void SequenceRender::useRate(double framesPerSecond) {
    if (request_.sequence.fps.empty() && !plan_.project.clock)
        plan_.clock.framesPerSecond = framesPerSecond;
}

void SequenceRender::createOutput() {
    const bool isNoClobber = request_.pictures.isNoClobber;
    if (isVideo(request_.output)) {
        requirePlace(request_.output);
        if (isNoClobber)
            requireAbsence(request_.output);
        sink_ = createVideo(request_.output, request_.sequence.codec, request_.pictures.quality,
                            plan_.clock.framesPerSecond);
        return;
    }
    sink_ = std::make_unique<PictureFiles>(files_.output);
    requirePlace(sink_->fileOf(jobs_.front().frame));
    requireFormat(sink_->fileOf(jobs_.front().frame), plan_.outputOptions(nullptr));
    if (isNoClobber)
        for (const FrameJob& job : jobs_)
            requireAbsence(sink_->fileOf(job.frame));
}

LayerSource SequenceRender::readFirst() {
    for (const FrameJob& job : jobs_) {
        const auto frame = job.sourceIn(files_.layer.text);
        if (source_ == nullptr || !frame)
            continue;
        try {
            return source_->read(*frame, plan_.layerOptions());
        } catch (const Failure& failure) {
            if (!request_.sequence.isKeepingGoing || &job == &jobs_.back())
                throw Failure(failure.code,
                              "frame " + std::to_string(job.frame) + ": " + failure.what());
        }
    }
    if (!plan_.picture.empty() && source_ == nullptr)
        return readSource(plan_.picture, plan_.layerOptions());
    const auto [width, height] = plan_.emptySize();
    return transparentSource(width, height, plan_.depth().value_or(Depth::Bits8));
}

SequenceRender::~SequenceRender() = default;

std::optional<std::string> SequenceRender::layerFileOf(const FrameJob& job) const {
    const auto frame = job.sourceIn(files_.layer.text);
    return frame ? std::optional(source_->fileOf(*frame)) : std::nullopt;
}

std::string SequenceRender::lineOf(const FrameJob& job) const {
    const std::string file = sink_->fileOf(job.frame);
    std::string line =
        file.empty() ? request_.output + " frame " + std::to_string(job.frame) : file;
    if (source_ != nullptr)
        line += " from " + layerFileOf(job).value_or("black");
    return line + "\n";
}

std::string SequenceRender::describe() const {
    std::string text;
    for (const FrameJob& job : jobs_)
        text += lineOf(job);
    return text;
}

// The state of a run. The pictures of a frame are read by the pool, rendered here, written by the
// pool and published here.
struct SequenceRender::Worker {
    struct Inputs {
        std::optional<LayerSource> layer;          // nothing: as before
        std::map<std::size_t, LayerSource> others; // those that change
    };
    struct Writing {
        const FrameJob* job;
        Recipe recipe;
        std::future<std::unique_ptr<PendingFrame>> pending;
    };

    Worker(SequenceRender& owner, Session& session)
        : sequence(owner), request(owner.request_), firstSource(owner.first_.get()),
          first(headOf(firstSource.picture)),
          progress(request.sequence.progress, owner.jobs_.size()) {
        setClock(first.header.get());
        readOther = [this](const std::string& picture, const ReadOptions& options) {
            return readOtherFrame(FrameFiles(picture), sequence.jobs_.front(), options);
        };
        const std::size_t bytes =
            std::size_t{first.width} * first.height * bytesPerPixel(first.depth);
        atOnce = framesAtOnce(memoryLimit(request.sequence.memory), 3 * bytes);
        renderer = std::make_unique<FrameRenderer>(session, owner.plan_, std::move(firstSource),
                                                   readOther);
        for (const std::string& picture : renderer->others())
            others.emplace_back(picture);
        if (owner.jobs_.size() > threadCount())
            setThreadsPerFile(1);
        makeCommonRecipe(session);
    }

    // The same picture without its pixels.
    static Picture headOf(const Picture& picture) {
        return {picture.width, picture.height, picture.depth, 0, {}, picture.header};
    }

    void setClock(const PictureHeader* header) {
        const FrameClock& clock = sequence.plan_.clock;
        if (header != nullptr && header->framesPerSecond && sequence.files_.output.pattern)
            sequence.useRate(*header->framesPerSecond);
        for (const FrameJob& job : sequence.jobs_)
            if (!isTime(clock.secondsOf(job.frame)))
                throw Failure(ExitCode::Usage, "frame " + std::to_string(job.frame) +
                                                   " is before the first frame, or too late");
    }

    void makeCommonRecipe(Session& session) {
        for (const std::string& file : renderer->effectFiles())
            common.effects.push_back(hashOfFile(file));
        common.module = hashOfFile(findModule(session.options.module));
        common.driver = renderer->driverName();
        const PictureRequest& pictures = request.pictures;
        common.options =
            nlohmann::json({int(first.depth), request.downsample, pictures.alpha,
                            pictures.type ? int(*pictures.type) : -1, pictures.compression,
                            pictures.quality.value_or(-1), pictures.channels,
                            pictures.colours.workSpace, pictures.colours.configuration,
                            hashOfFile(pictures.colours.configuration)})
                .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }

    Recipe recipe(const FrameJob& job) {
        std::vector<std::string> inputs;
        if (sequence.source_ != nullptr)
            inputs.push_back(sequence.layerFileOf(job).value_or(""));
        else if (!sequence.plan_.picture.empty())
            inputs.push_back(sequence.plan_.picture);
        for (const FrameFiles& files : others)
            inputs.push_back(fileOf(files, job).value_or(""));
        return recipeOf(common, renderer->valuesAt(secondsOf(job)), inputs);
    }

    static std::optional<std::string> fileOf(const FrameFiles& files, const FrameJob& job) {
        const auto frame = job.sourceIn(files.text);
        return frame ? std::optional(files.at(*frame)) : std::nullopt;
    }

    double secondsOf(const FrameJob& job) const {
        return sequence.plan_.clock.secondsOf(job.frame);
    }

    Recipe videoRecipe() {
        std::vector<Recipe> frames;
        for (const FrameJob& job : sequence.jobs_)
            frames.push_back(recipe(job));
        return recipeOfVideo(frames, request.sequence.codec + " " +
                                         std::to_string(sequence.plan_.clock.framesPerSecond));
    }

    // The frames that are not complete.
    std::vector<const FrameJob*> jobsToDo() {
        std::string reason;
        const bool isVideoDone = request.sequence.isResumed && isVideo(request.output) &&
                                 isMadeBy(request.output, videoRecipe(), reason);
        std::vector<const FrameJob*> jobs;
        for (const FrameJob& job : sequence.jobs_) {
            const std::string file = sequence.sink_->fileOf(job.frame);
            if (isVideoDone || (request.sequence.isResumed && !file.empty() &&
                                isMadeBy(file, recipe(job), reason)))
                progress.frameDone(job.frame, Progress::State::Skipped);
            else
                jobs.push_back(&job);
        }
        return jobs;
    }

    LayerSource readOtherFrame(const FrameFiles& files, const FrameJob& job,
                               const ReadOptions& options) const {
        const auto frame = job.sourceIn(files.text);
        return frame ? readFrame(files, *frame, options) : blackFrame(first, files.text);
    }

    Inputs read(const FrameJob& job) const {
        Inputs inputs;
        ReadOptions options = sequence.plan_.layerOptions();
        options.depth = first.depth;
        std::shared_ptr<const PictureHeader> header = first.header;
        if (sequence.source_ != nullptr) {
            const std::string& files = sequence.files_.layer.text;
            const auto frame = job.sourceIn(files);
            inputs.layer =
                frame ? sequence.source_->read(*frame, options) : blackFrame(first, files);
            header = inputs.layer->picture.header;
        }
        for (std::size_t i = 0; i < others.size(); ++i)
            if (others[i].pattern)
                inputs.others.emplace(
                    i, readOtherFrame(others[i], job,
                                      sequence.plan_.otherOptions(header, first.depth)));
        return inputs;
    }

    void startReading() {
        while (nextRead < todo.size() && reading.size() <= threadCount() &&
               reading.size() + writing.size() < atOnce) {
            const FrameJob* job = todo[nextRead++];
            reading.emplace_back(job,
                                 sequence.readers_->submit([this, job] { return read(*job); }));
        }
    }

    void renderNext() {
        auto [job, future] = std::move(reading.front());
        reading.pop_front();
        try {
            Inputs inputs = future.get();
            if (inputs.layer)
                renderer->setLayer(std::move(*inputs.layer));
            for (auto& [index, source] : inputs.others)
                renderer->setOther(index, std::move(source));
            auto picture = std::make_shared<Picture>(renderer->render(secondsOf(*job)));
            const WriteOptions options = sequence.plan_.outputOptions(picture->header.get());
            writing.push_back(
                {job, recipe(*job), sequence.writers_->submit([this, job = job, picture, options] {
                     return sequence.sink_->write(job->frame, *picture, options);
                 })});
        } catch (const Failure& failure) {
            while (!writing.empty())
                retire();
            fail(*job, failure);
        }
    }

    // Publishes the oldest frame; waits for it.
    void retire() {
        Writing done = std::move(writing.front());
        writing.pop_front();
        try {
            const std::unique_ptr<PendingFrame> pending = done.pending.get();
            const std::string file = sequence.sink_->fileOf(done.job->frame);
            pending->publish();
            if (!file.empty())
                storeRecipe(file, done.recipe);
            if (pending->isAlphaDropped && !std::exchange(isAlphaNoted, true))
                std::cerr << "pbhost: note: " << printable(file)
                          << ": the format has no alpha; it is dropped\n";
        } catch (const Failure& failure) {
            return fail(*done.job, failure);
        }
        progress.frameDone(done.job->frame, Progress::State::Rendered);
    }

    void fail(const FrameJob& job, const Failure& failure) {
        const std::string message =
            "frame " + std::to_string(job.frame) + ": " + std::string(failure.what());
        if (!request.sequence.isKeepingGoing)
            throw Failure(failure.code, message);
        std::cerr << "pbhost: " << printable(message) << "\n";
        failed.push_back(job.frame);
        progress.frameDone(job.frame, Progress::State::Failed);
    }

    void render() {
        removeAbandonedTemporaries(folderOf(request.output));
        for (startReading(); !reading.empty() || !writing.empty(); startReading()) {
            if (!reading.empty())
                renderNext();
            // Only waits where there is nothing else to do, or too much in memory.
            while (!writing.empty() && (reading.empty() || writing.size() > threadCount() ||
                                        reading.size() + writing.size() >= atOnce ||
                                        writing.front().pending.wait_for(std::chrono::seconds(0)) ==
                                            std::future_status::ready))
                retire();
        }
        sequence.sink_->finish();
        if (isVideo(request.output) && !todo.empty() && failed.empty())
            storeRecipe(request.output, videoRecipe());
    }

    std::string run() {
        std::string lines;
        todo = jobsToDo();
        if (request.sequence.isDryRun) {
            for (const FrameJob* job : todo)
                lines += sequence.lineOf(*job);
            return lines;
        }
        render();
        progress.finish();
        if (!request.save.empty())
            renderer->save(sequence.plan_.clock);
        if (!failed.empty())
            throw Failure(ExitCode::RenderFailed, "these frames failed: " + framesText(failed));
        return "";
    }

    SequenceRender& sequence;
    const RenderRequest& request;
    OtherReader readOther;
    LayerSource firstSource;
    const Picture first; // without pixels
    Progress progress;
    std::size_t atOnce = 1;
    std::unique_ptr<FrameRenderer> renderer;
    std::vector<FrameFiles> others;
    CommonRecipe common;
    std::vector<const FrameJob*> todo;
    std::size_t nextRead = 0; // index in `todo`
    std::deque<std::pair<const FrameJob*, std::future<Inputs>>> reading;
    std::deque<Writing> writing;
    std::vector<long> failed;
    bool isAlphaNoted = false;
};

std::string SequenceRender::run(Session& session) {
    Worker worker(*this, session);
    try {
        return worker.run();
    } catch (...) {
        readers_.reset(); // the tasks use the worker
        writers_.reset();
        throw;
    }
}

} // namespace pbhost
