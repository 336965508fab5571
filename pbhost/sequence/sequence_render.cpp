#include "pbhost/sequence/sequence_render.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <deque>
#include <filesystem>
#include <iostream>
#include <map>
#include <thread>

#include "pbhost/files/printable.h"
#include "pbhost/pictures/picture_formats.h"
#include "pbhost/process/failure.h"
#include "pbhost/sequence/fingerprint.h"
#include "pbhost/sequence/frame_ranges.h"
#include "pbhost/sequence/progress.h"
#include "pbhost/session/places.h"

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
LayerSource blackFrame(const Picture& like, const std::string& file) {
    const bool isOpaque = like.header != nullptr && !like.header->hasAlpha;
    Picture black = isOpaque ? opaqueBlack(like.width, like.height, like.depth)
                             : emptyPicture(like.width, like.height, like.depth);
    black.header = like.header;
    return {std::move(black), file};
}

} // namespace

SequenceRender::SequenceRender(const RenderRequest& request)
    : request_(request), plan_(request), files_(plan_) {
    if (!files_.output.pattern)
        throw Failure(ExitCode::Usage, request.output +
                                           ": several frames need a name with a place for their "
                                           "number, such as out.####.png");
    plan_.isSequence = true;
    jobs_ = listFrames(plan_, files_);
    if (!request.sequence.first && !plan_.project.clock)
        plan_.clock.first = firstFrame(jobs_);
    if (files_.layer.pattern)
        source_ = std::make_unique<PictureFiles>(files_.layer);
    sink_ = std::make_unique<PictureFiles>(files_.output);
    requirePlace(sink_->fileOf(jobs_.front().frame));
    requireFormat(sink_->fileOf(jobs_.front().frame), plan_.outputOptions(nullptr));
    if (request.pictures.isNoClobber)
        for (const FrameJob& job : jobs_)
            requireAbsence(sink_->fileOf(job.frame));
    if (request.sequence.isDryRun && !request.sequence.isResumed)
        return;
    pool_ = std::make_unique<WorkerPool>(threadCount());
    first_ = pool_->submit([this] { return readFirst(); });
}

LayerSource SequenceRender::readFirst() {
    for (const FrameJob& job : jobs_) {
        if (source_ == nullptr || !job.source)
            continue;
        try {
            return source_->read(*job.source, plan_.layerOptions());
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

std::string SequenceRender::lineOf(const FrameJob& job) const {
    std::string line = sink_->fileOf(job.frame);
    if (source_ != nullptr)
        line += " from " + (job.source ? source_->fileOf(*job.source) : std::string("black"));
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
            return readFrame(FrameFiles(picture), sequence.jobs_.front().frame, options);
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
        noteLeftOut();
    }

    // The same picture without its pixels.
    static Picture headOf(const Picture& picture) {
        return {picture.width, picture.height, picture.depth, 0, {}, picture.header};
    }

    void setClock(const PictureHeader* header) {
        FrameClock& clock = sequence.plan_.clock;
        if (header != nullptr && header->framesPerSecond && request.sequence.fps.empty() &&
            !sequence.plan_.project.clock)
            clock.framesPerSecond = *header->framesPerSecond;
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

    void noteLeftOut() const {
        if (first.header != nullptr && !first.header->leftOut.empty())
            std::cerr << "pbhost: note: " << printable(sequence.files_.layer.text) << ": "
                      << printable(first.header->leftOut)
                      << " are left out; --channels NAME chooses a layer\n";
    }

    Recipe recipe(const FrameJob& job) {
        std::vector<std::string> inputs;
        if (sequence.source_ != nullptr)
            inputs.push_back(job.source ? sequence.source_->fileOf(*job.source) : "");
        else if (!sequence.plan_.picture.empty())
            inputs.push_back(sequence.plan_.picture);
        for (const FrameFiles& files : others)
            inputs.push_back(files.at(job.frame));
        return recipeOf(common, renderer->valuesAt(secondsOf(job)), inputs);
    }

    double secondsOf(const FrameJob& job) const {
        return sequence.plan_.clock.secondsOf(job.frame);
    }

    // Whether a frame need not be rendered.
    bool isComplete(const FrameJob& job) {
        std::string reason;
        return request.sequence.isResumed &&
               isMadeBy(sequence.sink_->fileOf(job.frame), recipe(job), reason);
    }

    Inputs read(const FrameJob& job) const {
        Inputs inputs;
        ReadOptions options = sequence.plan_.layerOptions();
        options.depth = first.depth;
        std::shared_ptr<const PictureHeader> header = first.header;
        if (sequence.source_ != nullptr) {
            inputs.layer =
                job.source ? sequence.source_->read(*job.source, options)
                           : blackFrame(first, fs::absolute(sequence.files_.layer.text).string());
            header = inputs.layer->picture.header;
        }
        for (std::size_t i = 0; i < others.size(); ++i)
            if (others[i].pattern)
                inputs.others.emplace(i,
                                      readFrame(others[i], job.frame,
                                                sequence.plan_.otherOptions(header, first.depth)));
        return inputs;
    }

    void startReading() {
        while (nextRead < todo.size() && reading.size() <= threadCount() &&
               reading.size() + writing.size() < atOnce) {
            const FrameJob* job = todo[nextRead++];
            reading.emplace_back(job, sequence.pool_->submit([this, job] { return read(*job); }));
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
                {job, recipe(*job), sequence.pool_->submit([this, job = job, picture, options] {
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
    }

    std::string run() {
        std::string lines;
        for (const FrameJob& job : sequence.jobs_)
            if (isComplete(job))
                progress.frameDone(job.frame, Progress::State::Skipped);
            else
                todo.push_back(&job);
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
        pool_.reset(); // the tasks use the worker
        throw;
    }
}

} // namespace pbhost
