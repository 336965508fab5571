#include "pbhost/render/frame_renderer.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <utility>

#include <nlohmann/json.hpp>

#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/frames.h"
#include "pbhost/diagnostics/frame_fill.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/control_list.h"
#include "support/outcome_texts.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

constexpr int largestSide = 16384; // pixels

std::string countOf(std::size_t pictures) {
    return std::to_string(pictures) + (pictures == 1 ? " picture" : " pictures");
}

std::vector<std::size_t> layerControls(hostkit::Effect& effect) {
    std::vector<std::size_t> shown = listedControls(effect);
    std::erase_if(shown, [&](std::size_t index) {
        return !hostkit::isLayerControl(effect.definitions[index]);
    });
    return shown;
}

bool areSameFile(const fs::path& one, const fs::path& other) {
    std::error_code ignored;
    const auto place = [&](const fs::path& path) {
        return fs::weakly_canonical(fs::absolute(path, ignored), ignored);
    };
    return fs::equivalent(one, other, ignored) ||
           (!place(one).empty() && place(one) == place(other));
}

int downsampledSide(int pixels, unsigned part) {
    return static_cast<int>((static_cast<unsigned>(pixels) + part - 1) / part);
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

} // namespace

FrameRenderer::FrameRenderer(Session& owner, const RenderPlan& asked, LayerSource first,
                             const OtherReader& readOther)
    : session_(owner), plan_(asked), depth_(first.picture.depth), header_(first.picture.header),
      readOther_(readOther) {
    stack_.push_back(std::make_unique<Scene>(owner, std::move(first)));
    for (std::size_t i = 1; i < plan_.names.size(); ++i)
        stack_.push_back(std::make_unique<Scene>(*stack_.front()));
    load();
    std::vector<std::size_t> inputs;
    for (const auto& scene : stack_) {
        scene->checkPrograms();
        inputs.push_back(scene->checkWiring(plan_.request.isStrict));
    }
    checkInputs(inputs);
    setPictures();
    setValues();
    for (const auto& layer : stack_.front()->layer.composition->layers)
        requireTextureSize(*layer);
    if (!plan_.request.save.empty())
        checkSave();
}

// A project's values are set last, because the update of the controls sets popups to the kernel's
// defaults.
void FrameRenderer::load() {
    const RenderRequest& request = plan_.request;
    for (std::size_t i = 0; i < stack_.size(); ++i) {
        if (request.project.empty()) {
            stack_[i]->apply(request.files[i]);
            continue;
        }
        const ProjectEffect& effect = plan_.project.effects[i];
        stack_[i]->open(request.project, effect.flatBlock, plan_.project.besideProject(effect));
        fillControls(*stack_[i], request.project, plan_.project, effect,
                     [this](const std::string& picture) { return addPicture(picture); });
    }
}

void FrameRenderer::checkInputs(const std::vector<std::size_t>& inputs) {
    const RenderRequest& request = plan_.request;
    const std::string file = request.files.empty() ? request.project : request.files.front();
    std::size_t fed = 1, wanted = 1;
    for (std::size_t i = 0; i < stack_.size(); ++i) {
        fed += layerControls(stack_[i]->effect).size();
        wanted += inputs[i] == 0 ? 0 : inputs[i] - 1;
    }
    if (stack_.size() == 1)
        wanted = request.files.empty() ? fed : inputs.front();
    const std::size_t given = request.inputs.size();
    if (given > fed)
        throw Failure(
            ExitCode::Usage,
            (stack_.size() == 1 ? file : "the effects") + ": takes " + countOf(wanted) + ", " +
                std::to_string(given) + " are given" +
                (wanted > fed ? ", and " + std::to_string(fed) + " can be connected" : ""));
    const std::size_t all = given + request.layers.size();
    if (all < wanted && !request.files.empty())
        std::cerr << "pbhost: note: " << (stack_.size() == 1 ? file : "the stack of effects")
                  << " takes " << countOf(wanted) << ", " << all
                  << " given; a missing one is transparent\n";
}

// The pictures after the first go to the layer controls of the effects in their order.
void FrameRenderer::setPictures() {
    std::size_t next = 0;
    for (std::size_t i = 0; i < stack_.size(); ++i)
        for (const std::size_t index : layerControls(stack_[i]->effect))
            if (next < plan_.extraPictures.size())
                setPicture("--input", {i, {std::to_string(index), plan_.extraPictures[next++]}});
    for (const TargetedSetting& each : plan_.layers)
        setPicture("--layer", each);
}

void FrameRenderer::setPicture(const char* option, const TargetedSetting& setting) {
    hostkit::Effect& effect = *effects()[effectOf(option, setting, plan_.names, effects(), true)];
    const std::size_t index = findLayerControl(effect, setting.setting);
    hostkit::StreamValue value;
    value.value.layer_id = addPicture(setting.setting.value);
    effect.control(index).set(value, plan_.seconds);
}

void FrameRenderer::setValues() {
    // Only renders with frames have a rate; the host's times are whole parts of a frame.
    if (!plan_.keys.empty() || plan_.isSequence)
        stack_.front()->layer.composition->frameRate = plan_.clock.framesPerSecond;
    const std::vector<hostkit::Effect*> all = effects();
    for (const TargetedSetting& each : plan_.settings)
        applySetting(*all[effectOf("--set", each, plan_.names, all, false)], each.setting,
                     plan_.seconds);
    for (const Key& key : plan_.keys)
        applyKey(*all[effectOf("--key", key.target, plan_.names, all, false)], key.target.setting,
                 plan_.clock.secondsOf(key.frame), key.isHeld);
}

AEGP_LayerIDVal FrameRenderer::addPicture(const std::string& picture) {
    LayerSource source = readOther_(picture, plan_.otherOptions(header_, depth_));
    const hostkit::Footage& own = *stack_.front()->layer.source;
    if (source.picture.width != unsigned(own.width) ||
        source.picture.height != unsigned(own.height))
        std::cerr << "pbhost: note: " << printable(picture) << " has " << source.picture.width
                  << " by " << source.picture.height << " pixels, the layer " << own.width << " by "
                  << own.height << "; it lies in the upper left corner\n";
    others_.push_back(picture);
    otherLayers_.push_back(stack_.front()->addLayer(std::move(source)));
    return otherLayers_.back();
}

void FrameRenderer::setLayer(LayerSource source) {
    header_ = source.picture.header;
    hostkit::Layer& layer = stack_.front()->layer;
    layer.source = footageOf(std::move(source));
    requireTextureSize(layer);
}

void FrameRenderer::setOther(std::size_t index, LayerSource source) {
    hostkit::Layer& layer = *stack_.front()->layer.composition->findLayer(otherLayers_[index]);
    layer.source = footageOf(std::move(source));
    requireTextureSize(layer);
}

// The effect draws nothing and reports no error for a frame that is too large for OpenGL.
void FrameRenderer::requireTextureSize(const hostkit::Layer& layer) const {
    const hostkit::Footage& source = *layer.source;
    if (std::max(downsampledSide(source.width, plan_.downsample.first),
                 downsampledSide(source.height, plan_.downsample.second)) > largestSide)
        throw Failure(source.name.empty() ? ExitCode::Usage : ExitCode::RenderFailed,
                      "the picture is larger than the " + std::to_string(largestSide) +
                          " pixels per side that OpenGL drivers support");
}

hostkit::World FrameRenderer::renderEffect(Scene& scene, double seconds, hostkit::World* input) {
    hostkit::RenderRequest frame;
    frame.seconds = seconds;
    frame.downsampleX.den = plan_.downsample.first;
    frame.downsampleY.den = plan_.downsample.second;
    frame.input = input;
    // A buffer of the frame's size, so that Effect::render uses it.
    const hostkit::World& pixels = scene.layer.source->pixels;
    hostkit::World buffer = hostkit::makeOutput(
        downsampledSide(pixels.width, plan_.downsample.first),
        downsampledSide(pixels.height, plan_.downsample.second), pixels.componentBytes);
    fillUnwritten(buffer);
    hostkit::RenderResult result = scene.effect.render(frame, std::move(buffer));
    session_.require(result.error);
    requireNoLateError(session_);
    if (const auto row = unwrittenRow(result.output))
        throw Failure(ExitCode::RenderFailed, "the effect has not written its output: row " +
                                                  std::to_string(*row) +
                                                  " of the output is unchanged");
    return std::move(result.output);
}

Picture FrameRenderer::render(double seconds) {
    hostkit::World world;
    for (std::size_t i = 0; i < stack_.size(); ++i)
        world = renderEffect(*stack_[i], seconds, i == 0 ? nullptr : &world);
    return {static_cast<unsigned>(world.width),
            static_cast<unsigned>(world.height),
            depth_,
            static_cast<unsigned>(world.rowBytes),
            std::move(world.data),
            header_};
}

std::vector<hostkit::Effect*> FrameRenderer::effects() const {
    std::vector<hostkit::Effect*> all;
    for (const auto& scene : stack_)
        all.push_back(&scene->effect);
    return all;
}

std::vector<std::string> FrameRenderer::effectFiles() {
    std::vector<std::string> files;
    for (const auto& scene : stack_)
        files.push_back(scene->file());
    return files;
}

std::string FrameRenderer::valuesAt(double seconds) {
    nlohmann::json all = nlohmann::json::array();
    for (hostkit::Effect* effect : effects())
        for (std::size_t index = 1; index < effect->definitions.size(); ++index) {
            const hostkit::ControlKind& kind = hostkit::kindOf(effect->definitions[index]);
            if (kind.numbers > 0)
                all.push_back(
                    hostkit::numbersOf(kind, effect->control(index).withExpression(seconds).value));
        }
    return all.dump();
}

std::string FrameRenderer::driverName() {
    session_.require(session_.plugin->about());
    std::string text;
    for (const std::string& line : session_.takeMessages())
        text += line + "\n";
    return text;
}

// Called when the scene is loaded, because the names of its pictures are needed.
void FrameRenderer::checkSave() {
    const RenderRequest& request = plan_.request;
    const std::string& save = request.save;
    const auto fail = [&](const std::string& why) {
        throw Failure(ExitCode::Usage, "--save " + save + ": " + why);
    };
    if (areSameFile(save, request.output))
        fail("it is the output picture");
    for (const std::string& file : request.files)
        if (areSameFile(save, file))
            fail("a project cannot overwrite a kernel or graph");
    if (namesEffectFile(save))
        fail("a project cannot overwrite a kernel or graph");
    for (const auto& layer : stack_.front()->layer.composition->layers) {
        const std::string& picture = layer->source->name;
        if (!picture.empty() && areSameFile(save, picture))
            fail("it is an input picture");
        if (!isUtf8(picture))
            fail("'" + picture + "' cannot be stored in a project: the name is not UTF-8");
    }
}

void FrameRenderer::save(const std::optional<FrameClock>& clock) {
    std::vector<Scene*> stack;
    for (const auto& scene : stack_)
        stack.push_back(scene.get());
    writeProject(plan_.request.save, stack, plan_.seconds, clock);
}

} // namespace pbhost
