#include "pbhost/commands/render_command.h"

#include <unistd.h>

#include <cstdio>
#include <future>
#include <iostream>
#include <memory>

#include "pbhost/files/printable.h"
#include "pbhost/files/read_file.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/render/frame_renderer.h"
#include "pbhost/sequence/sequence_render.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

constexpr const char* standardStream = "-";

// Replaces "-" by files in a temporary folder, because most formats need files that can be sought.
class PipedFiles {
public:
    explicit PipedFiles(RenderRequest& request) {
        for (std::string& input : request.inputs)
            if (input == standardStream)
                input = takeInput();
        if (request.output != standardStream)
            return;
        const std::string& format = request.pictures.format;
        if (format.empty())
            throw Failure(ExitCode::Usage, "-o -: --format is needed, such as --format png");
        output_ = folder() + "/output." + format;
        request.output = output_;
    }

    // The bytes of the picture that was written instead of standard output.
    std::string takeOutput() const {
        return output_.empty() ? "" : readWholeFile(output_, ExitCode::RenderFailed);
    }

private:
    const std::string& folder() {
        if (!folder_)
            folder_ = std::make_unique<TemporaryFolder>();
        return folder_->path;
    }

    std::string takeInput() {
        if (isInputTaken_)
            throw Failure(ExitCode::Usage, "-i -: standard input can only be read once");
        isInputTaken_ = true;
        const std::string path = folder() + "/standard input";
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                                   std::fclose);
        std::vector<char> bytes(1 << 20);
        for (ssize_t count = 1; count > 0;) {
            count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
            if (count < 0 || file == nullptr ||
                std::fwrite(bytes.data(), 1, std::size_t(count), file.get()) != std::size_t(count))
                throw Failure(ExitCode::BadPicture, "standard input cannot be read");
        }
        return path;
    }

    std::unique_ptr<TemporaryFolder> folder_;
    std::string output_;
    bool isInputTaken_ = false;
};

void noteLeftOut(const LayerSource& source) {
    const PictureHeader* header = source.picture.header.get();
    if (header != nullptr && !header->leftOut.empty())
        std::cerr << "pbhost: note: " << printable(source.file) << ": "
                  << printable(header->leftOut)
                  << " are left out; --channels NAME chooses a layer\n";
}

void renderPicture(const RenderRequest& request, const SessionOptions& options) {
    requirePlace(request.output);
    if (!request.save.empty())
        requirePlace(request.save);
    if (request.pictures.isNoClobber)
        requireAbsence(request.output);
    const RenderPlan plan(request);
    std::future<LayerSource> ahead = readAhead(plan);
    Session session(options);
    renderPicture(session, plan, std::move(ahead));
    session.finish("");
}

std::string renderFrames(const RenderRequest& request, const SessionOptions& options) {
    if (!request.save.empty())
        requirePlace(request.save);
    SequenceRender sequence(request);
    if (request.sequence.isDryRun && !request.sequence.isResumed)
        return sequence.describe();
    Session session(options);
    return session.finish(sequence.run(session));
}

} // namespace

std::future<LayerSource> readAhead(const RenderPlan& plan) {
    return std::async(std::launch::async, [&plan] {
        if (!plan.picture.empty())
            return readSource(plan.picture, plan.layerOptions());
        const auto [width, height] = plan.emptySize();
        return transparentSource(width, height, plan.depth().value_or(Depth::Bits8));
    });
}

void renderPicture(Session& session, const RenderPlan& plan, std::future<LayerSource> layer) {
    const RenderRequest& request = plan.request;
    requireFormat(request.output, plan.outputOptions(nullptr));
    LayerSource source = layer.get();
    noteLeftOut(source);
    const OtherReader readOther = [](const std::string& picture, const ReadOptions& options) {
        return readSource(picture, options);
    };
    FrameRenderer renderer(session, plan, std::move(source), readOther);
    const Picture picture = renderer.render(plan.seconds);
    if (writePicture(request.output, picture, plan.outputOptions(picture.header.get())))
        std::cerr << "pbhost: note: " << printable(request.output)
                  << ": the format has no alpha; it is dropped\n";
    if (!request.save.empty())
        renderer.save(plan.keys.empty() ? plan.project.clock : std::optional(plan.clock));
}

std::vector<fs::path> outputFolders(const RenderRequest& request) {
    std::vector<fs::path> folders;
    for (const std::string& file : {request.output, request.save})
        folders.push_back(folderOf(resolveLink(file)));
    folders.push_back(folders.front() / ".pbhost");
    return folders;
}

std::string render(RenderRequest request, const SessionOptions& options) {
    PipedFiles pipes(request);
    const QuietOutput quiet(options.isVerbose); // for what is read ahead, too
    if (isSequence(request))
        return renderFrames(request, options);
    renderPicture(request, options);
    return pipes.takeOutput();
}

} // namespace pbhost
