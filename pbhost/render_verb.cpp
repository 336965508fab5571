#include "pbhost/render_verb.h"

#include <algorithm>
#include <iostream>

#include "engine/image_node.h"
#include "pbhost/effect_file.h"
#include "pbhost/engine_session.h"
#include "pbhost/failure.h"
#include "pbhost/parameter_setting.h"
#include "pbhost/printable.h"

namespace pbhost {

namespace {

constexpr unsigned defaultWidth = 640; // of a picture that no input gives a size
constexpr unsigned defaultHeight = 360;

std::vector<Picture> readInputs(const RenderRequest& request) {
    std::vector<Picture> pictures;
    std::optional<Depth> depth = request.depth;
    try {
        for (const std::string& path : request.inputs) {
            pictures.push_back(readPicture(path, depth));
            depth = pictures.front().depth;
        }
    } catch (const PictureError& error) {
        throw Failure(ExitCode::BadPicture, error.what());
    }
    return pictures;
}

Picture makeOutput(const RenderRequest& request, const std::vector<Picture>& inputs) {
    unsigned width = inputs.empty() ? defaultWidth : inputs.front().width;
    unsigned height = inputs.empty() ? defaultHeight : inputs.front().height;
    if (request.size)
        std::tie(width, height) = *request.size;
    const Depth depth =
        inputs.empty() ? request.depth.value_or(Depth::Bits8) : inputs.front().depth;
    try {
        return makePicture(width, height, depth);
    } catch (const PictureError& error) {
        throw Failure(ExitCode::Usage, error.what());
    }
}

std::string countOf(std::size_t pictures) {
    return std::to_string(pictures) + (pictures == 1 ? " picture" : " pictures");
}

void checkInputs(const RenderRequest& request, const pbGraph& graph) {
    const auto wanted = static_cast<std::size_t>(graph.imageNodeCount());
    const std::size_t given = request.inputs.size();
    constexpr std::size_t mostImages = std::tuple_size_v<decltype(FrameDescription::images)>;
    if (given > std::min(std::max<std::size_t>(wanted, 1), mostImages))
        throw Failure(ExitCode::Usage, request.file + ": takes " + countOf(wanted) + ", " +
                                           std::to_string(given) + " are given" +
                                           (wanted > mostImages ? ", and 4 can be fed" : ""));
    if (given < wanted)
        std::cerr << "pbhost: note: " << request.file << " takes " << countOf(wanted) << ", "
                  << given << " given; a missing one is transparent\n";
}

void describe(ImageSlot& slot, Picture& picture) {
    slot.componentBytes = bytesPerChannel(picture.depth);
    slot.channels = channelsPerPixel;
    slot.width = picture.width;
    slot.height = picture.height;
    slot.rowPixels = picture.rowBytes / bytesPerPixel(picture.depth);
    slot.pixels = picture.pixels.data();
}

void requireTextureSize(const FrameDescription& frame) {
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    if (std::max(frame.width, frame.height) > static_cast<unsigned>(largest))
        throw Failure(ExitCode::RenderFailed,
                      "the picture is larger than the " + std::to_string(largest) +
                          " pixels a side that this machine's OpenGL can take");
}

// The errors are a list; a kernel may have left others in front.
void requireMemory() {
    for (GLenum error = glGetError(); error != GL_NO_ERROR; error = glGetError())
        if (error == GL_OUT_OF_MEMORY)
            throw Failure(ExitCode::RenderFailed, "the picture does not fit in OpenGL's memory");
}

} // namespace

void renderPictures(pbGraph& graph, std::vector<Picture>& inputs, Picture& output) {
    FrameDescription target;
    describe(target, output);
    FrameDescription frame = target;
    frame.pixels = nullptr;
    for (std::size_t i = 0; i < std::min(inputs.size(), frame.images.size()); ++i) {
        describe(frame.images[i], inputs[i]);
        frame.images[i].imageIndex = static_cast<std::int32_t>(i);
        frame.width = std::max(frame.width, inputs[i].width);
        frame.height = std::max(frame.height, inputs[i].height);
    }
    requireTextureSize(frame);
    for (std::int32_t i = 0; i < graph.imageNodeCount(); ++i)
        static_cast<ImageNode*>(graph.imageNodeAt(i))->slot = i;
    graph.render(frame);
    graph.nodes[static_cast<std::size_t>(graph.outputNode)]->readBack(target);
    graph.resetNodes();
    requireMemory();
}

void render(const RenderRequest& request) {
    std::vector<ParameterSetting> settings;
    for (const std::string& text : request.settings)
        settings.push_back(parseSetting(text));
    EngineSession session;
    const LoadedGraph loaded = session.load(request.file);
    std::cerr << printable(loaded.warnings);
    pbGraph& graph = *loaded.graph;
    checkInputs(request, graph);
    std::vector<Picture> inputs = readInputs(request);
    Picture output = makeOutput(request, inputs);
    placeRelativePoints(graph, output.width, output.height);
    for (const ParameterSetting& setting : settings)
        applySetting(graph, isGraphFile(request.file), setting);
    renderPictures(graph, inputs, output);
    try {
        writePicture(request.output, output);
    } catch (const PictureError& error) {
        throw Failure(ExitCode::RenderFailed, error.what());
    }
}

} // namespace pbhost
