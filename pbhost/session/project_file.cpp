#include "pbhost/session/project_file.h"

#include <cmath>
#include <stdexcept>
#include <utility>

#include "hostkit/services/json_errors.h"
#include "pbhost/files/json_text.h"
#include "pbhost/files/read_file.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/control_list.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

using hostkit::ControlKind;
using nlohmann::ordered_json;

constexpr int version = 1;
constexpr int stackVersion = 2;
constexpr char notAProject[] = ": not a valid project: ";

// Errors of the JSON library get another text.
template<class Work>
auto inPlainWords(const Work& work) {
    try {
        return work();
    } catch (const nlohmann::json::exception& error) {
        throw std::invalid_argument(hostkit::plainJsonError(error));
    }
}

std::string toHex(const std::vector<std::byte>& bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : bytes) {
        text += digits[std::to_integer<unsigned>(byte >> 4)];
        text += digits[std::to_integer<unsigned>(byte & std::byte{15})];
    }
    return text;
}

unsigned digitOf(char digit) {
    const std::size_t value = std::string_view("0123456789abcdef").find(digit);
    if (value == std::string_view::npos)
        throw std::invalid_argument("\"data\" contains other characters than hexadecimal digits");
    return static_cast<unsigned>(value);
}

std::vector<std::byte> fromHex(const std::string& text) {
    if (text.size() % 2 != 0)
        throw std::invalid_argument("\"data\" has an odd number of digits");
    std::vector<std::byte> bytes;
    for (std::size_t i = 0; i < text.size(); i += 2)
        bytes.push_back(std::byte(digitOf(text[i]) * 16 + digitOf(text[i + 1])));
    return bytes;
}

ProjectEffect parseEffect(const ordered_json& json) {
    return {fromHex(json.at("data").get<std::string>()), json.value("file", ""),
            json.at("controls")};
}

FrameClock parseClock(const ordered_json& json) {
    const FrameClock clock = {json.at("fps").get<double>(), wholeNumber<long>(json.at("first"))};
    if (!(clock.framesPerSecond >= 0.01 && clock.framesPerSecond <= 10000))
        throw std::invalid_argument("\"fps\" is not a valid frame rate");
    return clock;
}

ProjectFile parse(const ordered_json& json) {
    if (json.at("version") != version && json.at("version") != stackVersion)
        throw std::invalid_argument("version " + json.at("version").dump() + " is unknown");
    ProjectFile project;
    const auto depth = depthOfBits(wholeNumber<int>(json.at("depth")));
    if (!depth)
        throw std::invalid_argument("\"depth\" is neither 8, 16 nor 32");
    project.depth = *depth;
    project.seconds = json.at("time").get<double>();
    if (!isTime(project.seconds))
        throw std::invalid_argument("\"time\" is not a valid time: " + json.at("time").dump());
    const ordered_json& layer = json.at("layer");
    if (layer.contains("picture")) {
        project.picture = layer.at("picture").get<std::string>();
    } else {
        project.width = wholeNumber<unsigned>(layer.at("width"));
        project.height = wholeNumber<unsigned>(layer.at("height"));
    }
    if (json.contains("clock"))
        project.clock = parseClock(json.at("clock"));
    const ordered_json effects =
        json.contains("effects") ? json.at("effects") : ordered_json::array({json.at("effect")});
    for (const ordered_json& effect : effects)
        project.effects.push_back(parseEffect(effect));
    if (project.effects.empty())
        throw std::invalid_argument("it has no effects");
    return project;
}

// The path from the project's folder if the file is below it, otherwise the path itself.
std::string storedPath(const fs::path& folder, const std::string& file) {
    const fs::path relative = fs::path(file).lexically_relative(folder);
    return relative.empty() || *relative.begin() == ".." ? file : relative.string();
}

// Conversion between a stream's value and the project's, with all digits, so that renders are
// identical.
ordered_json storedValue(const Scene& scene, const fs::path& folder, const ControlKind& kind,
                         const hostkit::StreamValue& value) {
    if (kind.numbers == 1)
        return value.value.one_d;
    if (kind.numbers > 1)
        return hostkit::numbersOf(kind, value.value);
    const std::string file = scene.fileOf(value.value.layer_id);
    return file.empty() ? ordered_json() : ordered_json(storedPath(folder, file));
}

// What the values of a project are filled in with.
struct Filling {
    Scene& scene;
    const ProjectFile& project;
    const PictureAdder& addPicture;
};

hostkit::StreamValue streamValue(const Filling& filling, const ControlKind& kind,
                                 const ordered_json& stored) {
    hostkit::StreamValue value;
    if (kind.numbers > 0) {
        std::vector<double> numbers(kind.numbers);
        for (std::size_t k = 0; k < kind.numbers; ++k) {
            const std::size_t at = kind.order[k];
            numbers[at] = (kind.numbers == 1 ? stored : stored.at(at)).get<double>();
        }
        value.value = hostkit::valueOf(kind, numbers);
    } else if (!stored.is_null()) {
        value.value.layer_id =
            filling.addPicture(filling.project.resolved(stored.get<std::string>()));
    }
    return value;
}

// Checks the value as --set does, but also accepts the control's default.
void requireFit(const Scene& scene, std::size_t index, const ordered_json& number) {
    const PF_ParamDef& definition = scene.effect.definitions[index];
    const std::string fault = faultOfNumber(definition, number.get<double>());
    if (!fault.empty() && !mayBeDefault(definition, number.get<double>(), scene.layer))
        throw std::invalid_argument("control " + std::to_string(index) + ", " +
                                    nameOf(scene.effect, index) + ": " + number.dump() + " " +
                                    fault);
}

hostkit::StreamValue fittingValue(const Filling& filling, std::size_t index,
                                  const ordered_json& stored) {
    const Scene& scene = filling.scene;
    const ControlKind& kind = hostkit::kindOf(scene.effect.definitions[index]);
    const hostkit::StreamValue value = streamValue(filling, kind, stored);
    if (kind.numbers > 0)
        for (const ordered_json& number :
             stored.is_array() ? stored : ordered_json::array({stored}))
            requireFit(scene, index, number);
    return value;
}

const char* interpolationName(AEGP_KeyframeInterpolationType type) {
    return type == AEGP_KeyInterp_HOLD ? "hold" : "linear";
}

AEGP_KeyframeInterpolationType interpolationOf(const ordered_json& json, const char* side) {
    return json.value(side, "linear") == "hold" ? AEGP_KeyInterp_HOLD : AEGP_KeyInterp_LINEAR;
}

ordered_json storedControl(Scene& scene, const fs::path& folder, std::size_t index) {
    const hostkit::Stream& stream = scene.effect.control(index);
    const ControlKind& kind = hostkit::kindOf(scene.effect.definitions[index]);
    ordered_json json = {{"index", index},
                         {"name", nameOf(scene.effect, index)},
                         {"kind", kind.name},
                         {"value", storedValue(scene, folder, kind, stream.constant)}};
    for (const hostkit::Keyframe& keyframe : stream.keyframes)
        json["keyframes"].push_back({{"time", keyframe.seconds},
                                     {"value", storedValue(scene, folder, kind, keyframe.value)},
                                     {"in", interpolationName(keyframe.in)},
                                     {"out", interpolationName(keyframe.out)}});
    return json;
}

void fillControl(const Filling& filling, const ordered_json& stored) {
    Scene& scene = filling.scene;
    const auto index = wholeNumber<std::size_t>(stored.at("index"));
    if (index == 0 || index >= scene.effect.definitions.size())
        throw std::invalid_argument("there is no control " + std::to_string(index));
    const ControlKind& kind = hostkit::kindOf(scene.effect.definitions[index]);
    if (stored.at("kind") != kind.name)
        throw std::invalid_argument("control " + std::to_string(index) + " is a " + kind.name);
    hostkit::Stream& stream = scene.effect.control(index);
    stream.keyframes.clear();
    stream.set(fittingValue(filling, index, stored.at("value")), 0);
    for (const ordered_json& each : stored.value("keyframes", ordered_json::array())) {
        const auto seconds = each.at("time").get<double>();
        if (!isTime(std::abs(seconds))) // layer time, which may be negative
            throw std::invalid_argument("control " + std::to_string(index) +
                                        ": a keyframe's \"time\" is not a valid time");
        const std::size_t at = stream.addKeyframe(seconds);
        stream.setKeyframe(at, fittingValue(filling, index, each.at("value")));
        stream.keyframes[at].in = interpolationOf(each, "in");
        stream.keyframes[at].out = interpolationOf(each, "out");
    }
}

ordered_json layerAsJson(const hostkit::Footage& source, const fs::path& folder) {
    if (source.name.empty())
        return {{"width", source.width}, {"height", source.height}};
    return {{"picture", storedPath(folder, source.name)}};
}

ordered_json effectAsJson(Scene& scene, const fs::path& folder) {
    ordered_json controls = ordered_json::array();
    for (const std::size_t index : listedControls(scene.effect))
        controls.push_back(storedControl(scene, folder, index));
    const std::vector<std::byte> block = scene.effect.save();
    const std::string file = storedPath(folder, pathInBlock(block));
    ordered_json json = {{"title", scene.effect.title()}};
    if (fs::path(file).is_relative())
        json["file"] = file;
    json["data"] = toHex(block);
    json["controls"] = controls;
    return json;
}

fs::path folderOfProject(const std::string& path) {
    return fs::absolute(path).lexically_normal().parent_path();
}

} // namespace

ProjectFile readProject(const std::string& path) {
    const std::string text = readWholeFile(path, ExitCode::Usage);
    ProjectFile project = orFail(ExitCode::Usage, path + notAProject, [&] {
        return inPlainWords([&] { return parse(ordered_json::parse(text)); });
    });
    project.folder = folderOfProject(path);
    if (!project.picture.empty())
        project.picture = project.resolved(project.picture);
    return project;
}

std::string ProjectEffect::lastFile() const {
    return pathInBlock(flatBlock);
}

std::string ProjectFile::resolved(const std::string& file) const {
    return (folder / file).string();
}

std::vector<std::string> ProjectEffect::pictures() const {
    std::vector<std::string> files;
    for (const ordered_json& control : controls)
        if (const auto value = control.find("value"); value != control.end() && value->is_string())
            files.push_back(value->get<std::string>());
    return files;
}

std::string ProjectFile::besideProject(const ProjectEffect& effect) const {
    std::error_code ignored;
    for (const fs::path& name : {fs::path(effect.file), fs::path(effect.lastFile()).filename()})
        if (!name.empty() && fs::is_regular_file(folder / name, ignored))
            return (folder / name).string();
    return "";
}

void fillControls(Scene& scene, const std::string& path, const ProjectFile& project,
                  const ProjectEffect& effect, const PictureAdder& addPicture) {
    orFail(ExitCode::Usage, path + notAProject, [&] {
        inPlainWords([&] {
            for (const ordered_json& stored : effect.controls)
                fillControl({scene, project, addPicture}, stored);
        });
    });
}

void writeProject(const std::string& path, const std::vector<Scene*>& stack, double seconds,
                  const std::optional<FrameClock>& clock) {
    const fs::path folder = folderOfProject(path);
    ordered_json effects = ordered_json::array();
    for (Scene* scene : stack)
        effects.push_back(effectAsJson(*scene, folder));
    Scene& first = *stack.front();
    ordered_json json = {{"version", effects.size() == 1 ? version : stackVersion},
                         {"depth", first.effect.componentBytes() * 8},
                         {"time", seconds}};
    if (clock)
        json["clock"] = {{"fps", clock->framesPerSecond}, {"first", clock->first}};
    json["layer"] = layerAsJson(*first.layer.source, folder);
    if (effects.size() == 1)
        json["effect"] = effects.front();
    else
        json["effects"] = effects;
    writeTextFile(path, jsonText(json));
}

} // namespace pbhost
