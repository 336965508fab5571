#include "pbhost/render/render_plan.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "hostkit/effect/control_kinds.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

constexpr unsigned mostDownsampling = 64;

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

// A number, or a fraction such as 24000/1001.
double parseRate(const std::string& text) {
    const std::size_t slash = text.find('/');
    const auto whole = hostkit::parseNumber(text.substr(0, slash));
    const auto part = slash == std::string::npos ? std::optional(1.0)
                                                 : hostkit::parseNumber(text.substr(slash + 1));
    if (!whole || !part || *part <= 0 || *whole / *part < 0.01 || *whole / *part > 10000)
        throw Failure(ExitCode::Usage,
                      "--fps " + text + ": write frames per second, as 24 or 30000/1001");
    // The decimals that stand for fractions.
    for (const double rate : {24.0, 30.0, 60.0})
        if (std::abs(*whole / *part - rate / 1.001) < 0.005)
            return rate / 1.001;
    return *whole / *part;
}

Key parseKey(const std::string& text, const EffectNames& names) {
    ControlSetting setting = parseSetting("--key", text);
    const std::size_t at = setting.control.rfind('@');
    Key key;
    const char* const end = setting.control.data() + setting.control.size();
    const char* const begin = at == std::string::npos ? end : setting.control.data() + at + 1;
    const auto [rest, error] = std::from_chars(begin, end, key.frame);
    if (error != std::errc() || rest != end || at == 0)
        throw Failure(ExitCode::Usage,
                      "--key " + text + ": write CONTROL@FRAME=VALUE, or CONTROL@FRAME=hold:VALUE");
    setting.control.erase(at);
    constexpr std::string_view hold = "hold:";
    key.isHeld = setting.value.starts_with(hold);
    if (key.isHeld)
        setting.value.erase(0, hold.size());
    key.target = targetOf("--key", setting, names);
    return key;
}

} // namespace

RenderPlan::RenderPlan(const RenderRequest& asked) : request(asked) {
    if (request.files.empty() == request.project.empty())
        throw Failure(ExitCode::Usage, "render needs a kernel or graph file, or --project");
    if (!request.project.empty())
        project = readProject(request.project);
    for (const std::string& file : request.files)
        names.push_back(fs::path(file).stem().string());
    for (const ProjectEffect& effect : project.effects)
        names.push_back(fs::path(effect.lastFile()).stem().string());
    picture = request.inputs.empty() ? project.picture : request.inputs[0];
    if (!request.inputs.empty())
        extraPictures.assign(request.inputs.begin() + 1, request.inputs.end());
    if (!picture.empty() && !request.size.empty())
        throw Failure(ExitCode::Usage,
                      "--size cannot be combined with a picture, which has its own size");
    seconds = request.time.empty() ? project.seconds : parseTime(request.time);
    downsample = parseDownsample(request.downsample);
    parseClock();
    parseSettings();
}

void RenderPlan::parseClock() {
    if (project.clock)
        clock = *project.clock;
    if (!request.sequence.fps.empty())
        clock.framesPerSecond = parseRate(request.sequence.fps);
    clock.first = request.sequence.first.value_or(clock.first);
}

void RenderPlan::parseSettings() {
    for (const std::string& text : request.settings)
        settings.push_back(targetOf("--set", parseSetting("--set", text), names));
    for (const std::string& text : request.layers) {
        layers.push_back(targetOf("--layer", parseSetting("--layer", text), names));
        if (layers.back().setting.value.empty())
            throw Failure(ExitCode::Usage, "--layer " + text + ": write CONTROL=PICTURE");
    }
    for (const std::string& text : request.keys)
        keys.push_back(parseKey(text, names));
}

std::optional<Depth> RenderPlan::depth() const {
    return request.project.empty() ? request.depth : request.depth.value_or(project.depth);
}

std::vector<std::string> RenderPlan::pictures() const {
    std::vector<std::string> all;
    if (!picture.empty())
        all.push_back(picture);
    all.insert(all.end(), extraPictures.begin(), extraPictures.end());
    for (const TargetedSetting& each : layers)
        all.push_back(each.setting.value);
    for (const ProjectEffect& effect : project.effects)
        for (const std::string& file : effect.pictures())
            all.push_back(project.resolved(file));
    return all;
}

std::pair<unsigned, unsigned> RenderPlan::emptySize() const {
    if (request.size.empty() && project.width != 0)
        return {project.width, project.height};
    return parseSize(request.size);
}

std::optional<Alpha> RenderPlan::wantedAlpha() const {
    const std::string& alpha = request.pictures.alpha;
    return alpha == "straight"        ? std::optional(Alpha::Straight)
           : alpha == "premultiplied" ? std::optional(Alpha::Premultiplied)
                                      : std::nullopt;
}

ReadOptions RenderPlan::layerOptions() const {
    return {.depth = depth(),
            .alpha = wantedAlpha(),
            .channels = request.pictures.channels,
            .colours = request.pictures.colours};
}

ReadOptions RenderPlan::otherOptions(const std::shared_ptr<const PictureHeader>& first,
                                     Depth itsDepth) const {
    ReadOptions options = {.depth = itsDepth,
                           .alpha = wantedAlpha(),
                           .colours = request.pictures.colours,
                           .beside = first};
    if (first != nullptr && request.pictures.alpha.empty())
        options.alpha = first->alpha;
    return options;
}

WriteOptions RenderPlan::outputOptions(const PictureHeader* first) const {
    const PictureRequest& pictures = request.pictures;
    WriteOptions options = {.alpha = wantedAlpha(),
                            .type = pictures.type,
                            .compression = pictures.compression,
                            .quality = pictures.quality,
                            .colours = pictures.colours,
                            .keepsExisting = pictures.isNoClobber};
    if (first != nullptr && pictures.alpha.empty())
        options.alpha = first->alpha;
    return options;
}

} // namespace pbhost
