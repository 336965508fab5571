#include "pbhost/commands/render_command.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <utility>

#include "command/command_scope.h"
#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/frames.h"
#include "pbhost/diagnostics/frame_fill.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/control_list.h"
#include "pbhost/session/control_setting.h"
#include "pbhost/session/project_file.h"
#include "pbhost/session/scene.h"
#include "support/outcome_texts.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

constexpr unsigned mostDownsampling = 64;
constexpr int largestSide = 16384; // pixels

// Parses two integers separated by `between`; nothing for any other text.
std::optional<std::pair<unsigned, unsigned>> parsePair(const std::string& text, char between) {
    std::pair<unsigned, unsigned> numbers;
    const char* const end = text.data() + text.size();
    const auto [middle, firstError] = std::from_chars(text.data(), end, numbers.first);
    if (firstError != std::errc() || middle == end || *middle != between)
        return std::nullopt;
    const auto [last, secondError] = std::from_chars(middle + 1, end, numbers.second);
    return secondError == std::errc() && last == end ? std::optional(numbers) : std::nullopt;
}

std::pair<unsigned, unsigned> parseSize(const std::string& text) {
    if (text.empty())
        return {emptyLayerWidth, emptyLayerHeight};
    const auto size = parsePair(text, 'x');
    if (!size || size->first == 0 || size->second == 0)
        throw Failure(ExitCode::Usage, "--size " + text + ": write WIDTHxHEIGHT, in pixels");
    return *size;
}

std::pair<unsigned, unsigned> parseDownsample(const std::string& text) {
    const bool isPair = text.find(',') != std::string::npos;
    const auto factors = parsePair(isPair ? text : text + "," + text, ',');
    if (!factors || std::min(factors->first, factors->second) < 1 ||
        std::max(factors->first, factors->second) > mostDownsampling)
        throw Failure(ExitCode::Usage, "--downsample " + text +
                                           ": write X or X,Y, whole numbers from 1 to 64; 2 is "
                                           "half the resolution");
    return *factors;
}

double parseTime(const std::string& text) {
    const auto seconds = hostkit::parseNumber(text);
    if (!seconds || !isTime(*seconds))
        throw Failure(ExitCode::Usage, "--time " + text + ": write a number of seconds");
    return *seconds;
}

// The parsed request; made before anything is loaded.
struct Plan {
    explicit Plan(const RenderRequest& asked) : request(asked) {
        if (request.file.empty() == request.project.empty())
            throw Failure(ExitCode::Usage, "render needs a kernel or graph file, or --project");
        if (!request.project.empty())
            project = readProject(request.project);
        for (const std::string& text : request.settings)
            settings.push_back(parseSetting("--set", text));
        for (const std::string& text : request.layers)
            if (layers.emplace_back(parseSetting("--layer", text)).value.empty())
                throw Failure(ExitCode::Usage, "--layer " + text + ": write CONTROL=PICTURE");
        for (std::size_t i = 1; i < request.inputs.size(); ++i)
            layers.insert(layers.begin() + static_cast<std::ptrdiff_t>(i) - 1,
                          {std::to_string(i), request.inputs[i]});
        seconds = request.time.empty() ? project.seconds : parseTime(request.time);
        downsample = parseDownsample(request.downsample);
    }

    LayerSource layerSource(std::future<LayerSource> ahead) const {
        const auto depth =
            request.project.empty() ? request.depth : request.depth.value_or(project.depth);
        const std::string& file = request.inputs.empty() ? project.picture : request.inputs[0];
        if (!file.empty() && !request.size.empty())
            throw Failure(ExitCode::Usage,
                          "--size cannot be combined with a picture, which has its own size");
        if (ahead.valid())
            return ahead.get();
        if (!file.empty())
            return readSource(file, depth);
        const bool asStored = request.size.empty() && project.width != 0;
        const auto [width, height] =
            asStored ? std::pair(project.width, project.height) : parseSize(request.size);
        return transparentSource(width, height, depth.value_or(Depth::Bits8));
    }

    const RenderRequest& request;
    ProjectFile project;
    std::vector<ControlSetting> settings;
    std::vector<ControlSetting> layers;
    double seconds = 0;
    std::pair<unsigned, unsigned> downsample;
};

std::string countOf(std::size_t pictures) {
    return std::to_string(pictures) + (pictures == 1 ? " picture" : " pictures");
}

std::size_t layerControls(hostkit::Effect& effect) {
    const auto shown = listedControls(effect);
    return static_cast<std::size_t>(std::count_if(shown.begin(), shown.end(), [&](auto index) {
        return hostkit::isLayerControl(effect.definitions[index]);
    }));
}

void checkInputs(Scene& scene, const Plan& plan, std::size_t inputs) {
    const std::string& file = plan.request.file;
    const std::size_t fed = 1 + layerControls(scene.effect);
    const std::size_t given = plan.request.inputs.size();
    const std::size_t wanted = file.empty() ? fed : inputs;
    if (given > fed)
        throw Failure(
            ExitCode::Usage,
            (file.empty() ? plan.request.project : file) + ": takes " + countOf(wanted) + ", " +
                std::to_string(given) + " are given" +
                (wanted > fed ? ", and " + std::to_string(fed) + " can be connected" : ""));
    const std::size_t all = plan.request.inputs.size() + plan.request.layers.size();
    if (all < wanted && !file.empty())
        std::cerr << "pbhost: note: " << file << " takes " << countOf(wanted) << ", " << all
                  << " given; a missing one is transparent\n";
}

void setControls(Scene& scene, const Plan& plan) {
    const auto depth = depthOfBits(scene.effect.componentBytes() * 8);
    for (const ControlSetting& each : plan.layers) {
        const std::size_t index = findLayerControl(scene.effect, each);
        hostkit::StreamValue value;
        value.value.layer_id = scene.addLayer(readSource(each.value, depth));
        scene.effect.control(index).set(value, plan.seconds);
    }
    for (const ControlSetting& each : plan.settings)
        applySetting(scene.effect, each, plan.seconds);
}

bool areSameFile(const fs::path& one, const fs::path& other) {
    std::error_code ignored;
    const auto place = [&](const fs::path& path) {
        return fs::weakly_canonical(fs::absolute(path, ignored), ignored);
    };
    return fs::equivalent(one, other, ignored) ||
           (!place(one).empty() && place(one) == place(other));
}

// Checks that --save names a file that may be overwritten. Called when the scene is loaded, because
// the names of its pictures are needed.
void checkSave(const Scene& scene, const RenderRequest& request) {
    const std::string& save = request.save;
    const auto fail = [&](const std::string& why) {
        throw Failure(ExitCode::Usage, "--save " + save + ": " + why);
    };
    if (areSameFile(save, request.output))
        fail("it is the output picture");
    if (namesEffectFile(save) || areSameFile(save, request.file))
        fail("a project cannot overwrite a kernel or graph");
    for (const auto& layer : scene.layer.composition->layers) {
        const std::string& picture = layer->source->name;
        if (!picture.empty() && areSameFile(save, picture))
            fail("it is an input picture");
        if (!isUtf8(picture))
            fail("'" + picture + "' cannot be stored in a project: the name is not UTF-8");
    }
}

int downsampledSide(int pixels, unsigned part) {
    return static_cast<int>((static_cast<unsigned>(pixels) + part - 1) / part);
}

// The effect draws nothing and reports no error for a frame that is too large for OpenGL.
void requireTextureSize(const hostkit::Layer& layer, const Plan& plan) {
    const hostkit::Footage& source = *layer.source;
    if (std::max(downsampledSide(source.width, plan.downsample.first),
                 downsampledSide(source.height, plan.downsample.second)) > largestSide)
        throw Failure(source.name.empty() ? ExitCode::Usage : ExitCode::RenderFailed,
                      "the picture is larger than the " + std::to_string(largestSide) +
                          " pixels per side that OpenGL drivers support");
}

// A buffer of the frame's size, so that Effect::render uses it.
hostkit::World outputBuffer(const hostkit::Layer& layer, const Plan& plan) {
    const hostkit::World& pixels = layer.source->pixels;
    return hostkit::makeOutput(downsampledSide(pixels.width, plan.downsample.first),
                               downsampledSide(pixels.height, plan.downsample.second),
                               pixels.componentBytes);
}

// PF_Cmd_SMART_RENDER returns 0 even if OpenGL failed. The effect reports such errors on the Info
// panel, marked with failureMark, or only in its error log. Both were empty before the render.
void requireNoLateError(Session& session) {
    std::string reason;
    for (const std::string& line : session.takeMessages())
        reason.append(reason.empty() ? "" : "\n")
            .append(line, line.starts_with(failureMark) ? failureMark.size() : 0);
    const std::string log = session.takeErrorLog();
    if (reason.empty())
        reason = log;
    if (!reason.empty())
        throw Failure(ExitCode::RenderFailed, "the render failed: " + reason);
}

Picture renderFrame(Scene& scene, const Plan& plan, Depth depth) {
    hostkit::RenderRequest frame;
    frame.seconds = plan.seconds;
    frame.downsampleX.den = plan.downsample.first;
    frame.downsampleY.den = plan.downsample.second;
    hostkit::World buffer = outputBuffer(scene.layer, plan);
    fillUnwritten(buffer);
    hostkit::RenderResult result = scene.effect.render(frame, std::move(buffer));
    scene.session.require(result.error);
    requireNoLateError(scene.session);
    hostkit::World& world = result.output;
    if (const auto row = unwrittenRow(world))
        throw Failure(ExitCode::RenderFailed, "the effect has not written its output: row " +
                                                  std::to_string(*row) +
                                                  " of the output is unchanged");
    return {static_cast<unsigned>(world.width), static_cast<unsigned>(world.height), depth,
            static_cast<unsigned>(world.rowBytes), std::move(world.data)};
}

// A project's values are set last, because the update of the controls sets popups to the kernel's
// defaults.
void load(Scene& scene, const Plan& plan) {
    const RenderRequest& request = plan.request;
    if (request.project.empty()) {
        scene.apply(request.file);
        return;
    }
    scene.open(request.project, plan.project.flatBlock);
    fillControls(scene, request.project, plan.project);
}

} // namespace

void checkOutputPlaces(const RenderRequest& request) {
    requirePlace(request.output);
    if (!request.save.empty())
        requirePlace(request.save);
}

std::future<LayerSource> readAhead(const RenderRequest& request) {
    if (request.inputs.empty() || !request.project.empty())
        return {};
    return std::async(std::launch::async,
                      [&request] { return readSource(request.inputs[0], request.depth); });
}

void render(Session& session, const RenderRequest& request, std::future<LayerSource> ahead) {
    requireFormat(request.output);
    const Plan plan(request);
    LayerSource source = plan.layerSource(std::move(ahead));
    const Depth depth = source.picture.depth;
    Scene scene(session, std::move(source));
    load(scene, plan);
    checkInputs(scene, plan, scene.checkFile(request.findings));
    setControls(scene, plan);
    for (const auto& layer : scene.layer.composition->layers)
        requireTextureSize(*layer, plan);
    if (!request.save.empty())
        checkSave(scene, request);
    writePicture(request.output, renderFrame(scene, plan, depth));
    if (!request.save.empty())
        writeProject(request.save, scene, plan.seconds);
}

} // namespace pbhost
