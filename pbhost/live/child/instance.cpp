#include "pbhost/live/child/instance.h"

#include <chrono>
#include <cmath>
#include <iostream>
#include <sstream>

#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/frames.h"
#include "pbhost/diagnostics/frame_fill.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/files/json_text.h"
#include "pbhost/live/child/control_facts.h"
#include "pbhost/live/child/encoding.h"
#include "pbhost/process/failure.h"
#include "pbhost/sequence/frame_io.h"
#include "pbhost/session/control_list.h"
#include "pbhost/session/control_setting.h"
#include "support/outcome_texts.h"

namespace pbhost::live {

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Collects what is written to standard error while it exists.
class CapturedErrors {
public:
    CapturedErrors() : saved_(std::cerr.rdbuf(text_.rdbuf())) {}
    ~CapturedErrors() { std::cerr.rdbuf(saved_); }
    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;
    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf* saved_;
};

std::string keyOf(const Data& request, unsigned downsample) {
    return Data{request.value("controls", Data::array()), request.value("layers", Data::object()),
                request.value("seconds", 0.0), downsample}
        .dump();
}

// Keeps the short texts of the numbers.
Data withDoubles(const Json& json) {
    return Data::parse(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

Display displayOf(const Data& request) {
    const std::string name = request.value("channels", std::string("composite"));
    const auto channels = channelsOf(name);
    if (!channels)
        throw Failure(ExitCode::Usage, "there are no channels \"" + name + "\"");
    return {*channels, request.value("exposure", 0.0)};
}

std::vector<std::byte> encode(DisplayPicture picture, const std::string& encoding) {
    if (encoding == "jpeg")
        return encodeJpeg(picture);
    return encoding == "png" ? encodePng(picture) : std::move(picture.pixels);
}

Depth depthOf(const hostkit::World& world) {
    return *depthOfBits(world.componentBytes * 8);
}

} // namespace

Scene& Instance::scene() {
    if (!scene_)
        throw Failure(ExitCode::BadKernel, "no kernel or graph is loaded");
    return *scene_;
}

LayerSource Instance::source(const std::string& file, std::optional<Depth> depth) {
    const FrameFiles files(file);
    const std::string name = files.at(frameNumber_);
    const std::pair key(name, depth ? static_cast<int>(componentBytesOf(*depth)) : 0);
    std::error_code ignored;
    const auto written = fs::last_write_time(name, ignored);
    const auto known = pictures_.find(key);
    if (known != pictures_.end() && known->second.written == written)
        return {known->second.picture, file};
    LayerSource read = readFrame(files, frameNumber_, {.depth = depth});
    if (files.pattern) // only the newest frame of a sequence is kept
        pictures_.erase(std::exchange(lastFrames_[file], key));
    pictures_.insert_or_assign(key, CachedPicture{read.picture, written});
    read.file = file;
    return read;
}

LayerSource Instance::layerSource(const Data& request, const ProjectFile& project) {
    auto depth = depthOfBits(wholeNumber(request, "depth", 0));
    if (!depth && request.contains("project"))
        depth = project.depth;
    const std::string picture = request.value("picture", project.resolved(project.picture));
    if (!picture.empty())
        return source(picture, depth);
    const unsigned width = wholeNumber(request, "width", project.width);
    const unsigned height = wholeNumber(request, "height", project.height);
    return transparentSource(width == 0 ? emptyLayerWidth : width,
                             height == 0 ? emptyLayerHeight : height, depth.value_or(Depth::Bits8));
}

void Instance::start(LayerSource source) {
    scene_.reset();
    session_.reset();
    layers_.clear();
    rendered_.clear();
    isFrameComplete_ = false;
    session_.emplace(options_);
    layerHeader_ = source.picture.header;
    scene_.emplace(*session_, std::move(source));
}

// A project's instance is not given the kernel's defaults, which a page needs, so a project is only
// opened to find its file.
std::string Instance::fileOfProject(const std::string& name, const ProjectFile& project) {
    if (project.effects.size() != 1)
        throw Failure(ExitCode::Usage, name + ": has " + std::to_string(project.effects.size()) +
                                           " effects; live shows a single one");
    const ProjectEffect& effect = project.effects.front();
    start(transparentSource(1, 1, project.depth));
    scene_->open(name, effect.flatBlock, project.besideProject(effect));
    return scene_->file();
}

Data Instance::load(const Data& request) {
    const std::string projectName = request.value("project", std::string());
    const ProjectFile project = projectName.empty() ? ProjectFile() : readProject(projectName);
    const CapturedErrors errors;
    clock_ = project.clock.value_or(FrameClock{request.value("fps", FrameClock().framesPerSecond),
                                               wholeNumber(request, "first", 0L)});
    try {
        const std::string file = projectName.empty() ? request.at("file").get<std::string>()
                                                     : fileOfProject(projectName, project);
        frameNumber_ = clock_.first;
        shownFrame_ = frameNumber_;
        start(layerSource(request, project));
        scene_->apply(file);
        const std::size_t inputs = scene_->checkFile({});
        const std::vector<Data> defaults = controlValues();
        setStored(request, project);
        Data loaded = loadedAsJson(project.seconds, inputs);
        for (std::size_t i = 0; i < defaults.size(); ++i)
            loaded["controls"][i]["default"] = defaults[i];
        loaded["warnings"] = errors.text();
        return loaded;
    } catch (...) {
        scene_.reset();
        throw;
    }
}

// The values of the project and of the command line.
void Instance::setStored(const Data& request, const ProjectFile& project) {
    for (const ProjectEffect& effect : project.effects)
        fillControls(*scene_, request["project"], project, effect,
                     [this](const std::string& picture) { return layerOf(picture); });
    const Data settings = request.value("settings", Data::array());
    for (const Data& text : settings)
        applySetting(scene_->effect, parseSetting("--set", text.get<std::string>()), 0);
}

std::vector<Data> Instance::controlValues() {
    std::vector<Data> values;
    for (const std::size_t index : listedControls(scene_->effect))
        values.push_back(withDoubles(controlAsJson(scene_->effect, index, 0)["value"]));
    return values;
}

// As in a project file.
Data Instance::keyframesAsJson(std::size_t index) {
    const hostkit::ControlKind& kind = hostkit::kindOf(scene_->effect.definitions[index]);
    Data keyframes = Data::array();
    for (const hostkit::Keyframe& keyframe : scene_->effect.control(index).keyframes) {
        const std::vector<double> numbers = hostkit::numbersOf(kind, keyframe.value.value);
        keyframes.push_back({{"time", keyframe.seconds},
                             {"value", numbers.size() == 1 ? Data(numbers[0]) : Data(numbers)},
                             {"in", keyframe.in == AEGP_KeyInterp_HOLD ? "hold" : "linear"},
                             {"out", keyframe.out == AEGP_KeyInterp_HOLD ? "hold" : "linear"}});
    }
    return keyframes;
}

Data Instance::loadedAsJson(double seconds, std::size_t inputs) {
    const hostkit::Footage& layer = *scene_->layer.source;
    const ControlNotes notes = notesOf(session_->host, scene_->file());
    Data controls = Data::array();
    for (const std::size_t index : listedControls(scene_->effect)) {
        controls.push_back(withDoubles(controlFacts(*scene_, index, notes)));
        controls.back()["keyframes"] = keyframesAsJson(index);
    }
    return {{"title", scene_->effect.title()},
            {"about", withDoubles(aboutFile(session_->host, scene_->file()))},
            {"file", fs::absolute(scene_->file()).string()},
            {"picture", layer.name},
            {"width", layer.width},
            {"height", layer.height},
            {"depth", scene_->effect.componentBytes() * 8},
            {"inputs", inputs},
            {"seconds", seconds},
            {"fps", clock_.framesPerSecond},
            {"first", clock_.first},
            {"controls", controls}};
}

AEGP_LayerIDVal Instance::layerOf(const std::string& picture) {
    const auto known = layers_.find(picture);
    if (known != layers_.end())
        return known->second;
    const auto depth = depthOfBits(scene().effect.componentBytes() * 8);
    return layers_[picture] = scene().addLayer(source(picture, depth));
}

void Instance::setLayer(std::size_t index, const Data& file) {
    if (index >= scene().effect.definitions.size() ||
        !hostkit::isLayerControl(scene().effect.definitions[index]))
        throw Failure(ExitCode::Usage, "control " + std::to_string(index) + " takes no picture");
    hostkit::StreamValue value;
    if (!file.is_null())
        value.value.layer_id = layerOf(file.get<std::string>());
    scene().effect.control(index).set(value, 0);
}

void Instance::set(const Data& request) {
    ProjectEffect values;
    values.controls = request.value("controls", Data::array());
    fillControls(scene(), "the page", {}, values,
                 [this](const std::string& picture) { return layerOf(picture); });
    const Data layers = request.value("layers", Data::object());
    for (const auto& [index, file] : layers.items())
        setLayer(std::stoul(index), file);
    showFrame(clock_.first + std::lround(request.value("seconds", 0.0) * clock_.framesPerSecond));
}

// Gives the layers of sequences the pictures of the frame.
void Instance::showFrame(long frame) {
    if (shownFrame_ == frame)
        return;
    shownFrame_.reset(); // in case that a picture cannot be read
    frameNumber_ = frame;
    const auto depth = depthOfBits(scene().effect.componentBytes() * 8);
    hostkit::Layer& own = scene().layer;
    for (const auto& layer : own.composition->layers)
        if (const std::string name = layer->source->name; FrameFiles(name).pattern)
            layer->source = footageOf(source(name, depth));
    shownFrame_ = frame;
}

// The render command returns 0 even if OpenGL failed.
void Instance::requireNoLateError() {
    std::string reason;
    for (const std::string& line : session_->takeMessages())
        reason.append(reason.empty() ? "" : "\n")
            .append(line, line.starts_with(failureMark) ? failureMark.size() : 0);
    if (!isFrameComplete_ && reason.empty())
        reason = session_->takeErrorLog();
    if (!reason.empty())
        throw Failure(ExitCode::RenderFailed, "the render failed: " + reason);
}

// The checks for a frame that was not written, and for errors that only the log tells, take as long
// as a small frame. They are done for the first frame after a load and for saved pictures.
void Instance::render(const Data& request, unsigned downsample) {
    const std::string key = keyOf(request, downsample);
    if (key == rendered_ && isFrameComplete_)
        return;
    rendered_.clear();
    set(request);
    hostkit::RenderRequest wanted;
    wanted.seconds = request.value("seconds", 0.0);
    wanted.downsampleX.den = wanted.downsampleY.den = downsample;
    const hostkit::World& input = scene().layer.source->pixels;
    const auto side = [&](int pixels) {
        return (pixels + static_cast<int>(downsample) - 1) / static_cast<int>(downsample);
    };
    if (!isFrameComplete_) {
        frame_ = hostkit::makeOutput(side(input.width), side(input.height), input.componentBytes);
        fillUnwritten(frame_);
    }
    const auto started = Clock::now();
    hostkit::RenderResult result = scene().effect.render(wanted, std::move(frame_));
    renderMilliseconds_ = millisecondsSince(started);
    frame_ = std::move(result.output);
    session_->require(result.error);
    requireNoLateError();
    if (!isFrameComplete_ && unwrittenRow(frame_))
        throw Failure(ExitCode::RenderFailed, "the effect has not written its output");
    isFrameComplete_ = true;
    rendered_ = key;
}

// The values of controls with keyframes, at the time.
Data Instance::animatedValues(double seconds) {
    Data values = Data::object();
    for (const std::size_t index : listedControls(scene().effect))
        if (!scene().effect.control(index).keyframes.empty())
            values[std::to_string(index)] =
                withDoubles(controlAsJson(scene().effect, index, seconds)["value"]);
    return values;
}

Message Instance::picture(const Data& request) {
    const Display display = displayOf(request);
    const bool isInput = request.value("of", std::string("output")) == "input";
    if (!isInput)
        render(request, std::max(1U, wholeNumber(request, "downsample", 1U)));
    const auto started = Clock::now();
    const std::string encoding = request.value("encoding", std::string("png"));
    DisplayPicture shown = displayPicture(isInput ? scene().layer.source->pixels : frame_, display);
    if (const unsigned factor = wholeNumber(request, "reduce", 1U); factor > 1)
        shown = reduced(shown, factor);
    const unsigned width = shown.width, height = shown.height;
    Message reply;
    reply.body = encode(std::move(shown), encoding);
    reply.head = {{"width", width},
                  {"height", height},
                  {"encoding", encoding},
                  {"renderMs", renderMilliseconds_},
                  {"encodeMs", millisecondsSince(started)},
                  {"animated", animatedValues(request.value("seconds", 0.0))}};
    return reply;
}

Data Instance::pixel(const Data& request) const {
    const auto x = wholeNumber<int>(request.at("x")), y = wholeNumber<int>(request.at("y"));
    const int inputX = wholeNumber(request, "inputX", x),
              inputY = wholeNumber(request, "inputY", y);
    Data input = Data::array();
    if (scene_)
        input = pixelAt(scene_->layer.source->pixels, inputX, inputY);
    return {{"x", inputX}, {"y", inputY}, {"output", pixelAt(frame_, x, y)}, {"input", input}};
}

void Instance::savePicture(const Data& request) {
    isFrameComplete_ = false;
    render(request, 1);
    writePicture(request.at("path").get<std::string>(),
                 {static_cast<unsigned>(frame_.width), static_cast<unsigned>(frame_.height),
                  depthOf(frame_), static_cast<unsigned>(frame_.rowBytes), frame_.data,
                  layerHeader_});
}

void Instance::saveProject(const Data& request) {
    set(request);
    writeProject(request.at("path").get<std::string>(), {&scene()}, request.value("seconds", 0.0),
                 clock_);
}

} // namespace pbhost::live
