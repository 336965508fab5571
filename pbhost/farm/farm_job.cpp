#include "pbhost/farm/farm_job.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "pbhost/process/failure.h"
#include "pbhost/process/run_program.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/sequence/frame_ranges.h"
#include "pbhost/sequence/sequence_render.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

// The arguments without those that each chunk has for itself.
std::vector<std::string> withoutFrames(const std::vector<std::string>& arguments) {
    std::vector<std::string> kept;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        const bool hasValue = word == "--frames" || word == "--first";
        if (hasValue)
            ++i;
        else if (!word.starts_with("--frames=") && !word.starts_with("--first=") &&
                 word != "--resume")
            kept.push_back(word);
    }
    return kept;
}

void requireFiles(const RenderRequest& request) {
    const auto isStream = [](const std::string& name) { return name == "-"; };
    if (isStream(request.output) ||
        std::any_of(request.inputs.begin(), request.inputs.end(), isStream))
        throw Failure(ExitCode::Usage, "a farm can't read or write standard streams");
    if (!isSequence(request))
        throw Failure(ExitCode::Usage,
                      "only sequences are rendered by a farm: --frames is missing");
    if (request.sequence.isDryRun || !request.save.empty())
        throw Failure(ExitCode::Usage, "--dry-run and --save have no meaning for a farm");
}

} // namespace

FarmJob::FarmJob(const FarmRequest& request) : words_(withoutFrames(request.arguments)) {
    requireFiles(request.render);
    if (request.chunk < 1)
        throw Failure(ExitCode::Usage, "--chunk is a number of frames, at least 1");
    RenderRequest listed = request.render;
    listed.sequence.isDryRun = true;
    listed.sequence.isResumed = false;
    const SequenceRender sequence(listed);
    first_ = sequence.frameAtZero();
    const std::vector<FrameJob>& jobs = sequence.jobs();
    std::size_t length = std::size_t(request.chunk);
    if ((jobs.size() + length - 1) / length > request.mostChunks) {
        length = (jobs.size() + request.mostChunks - 1) / request.mostChunks;
        std::cerr << "pbhost: note: chunks of " << length << " frames, because there can be "
                  << request.mostChunks << " of them\n";
    }
    for (std::size_t begin = 0; begin < jobs.size(); begin += length) {
        Chunk chunk;
        for (std::size_t i = begin; i < std::min(begin + length, jobs.size()); ++i) {
            chunk.frames.push_back(jobs[i].frame);
            chunk.files.push_back(sequence.fileOf(jobs[i].frame));
        }
        chunk.text = framesText(chunk.frames);
        chunks.push_back(std::move(chunk));
    }
    outputFolder = fs::absolute(folderOf(chunks.front().files.front())).lexically_normal().string();
}

std::string FarmJob::command(const std::string& frames) const {
    std::error_code ignored;
    std::string line =
        shellQuoted(fs::read_symlink("/proc/self/exe", ignored).string()) + " render";
    for (const std::string& word : words_)
        line += " " + shellQuoted(word);
    // With =, because a frame may be negative.
    return line + " --frames=" + frames + " --first=" + std::to_string(first_) + " --resume";
}

std::size_t FarmJob::frameCount() const {
    std::size_t count = 0;
    for (const Chunk& chunk : chunks)
        count += chunk.frames.size();
    return count;
}

std::string printCommands(const FarmRequest& request) {
    const FarmJob job(request);
    std::string lines;
    for (const FarmJob::Chunk& chunk : job.chunks)
        lines += job.command(shellQuoted(chunk.text)) + "\n";
    return lines;
}

} // namespace pbhost
