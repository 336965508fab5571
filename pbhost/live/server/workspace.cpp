#include "pbhost/live/server/workspace.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "hostkit/services/complete_file.h"
#include "pbhost/files/json_text.h"
#include "pbhost/files/read_file.h"
#include "pbhost/process/failure.h"
#include "pbhost/sequence/frame_pattern.h"
#include "pbhost/sequence/frame_ranges.h"

namespace pbhost::live {

namespace fs = std::filesystem;

Workspace::Workspace(const LiveRequest& asked) : request(asked) {
    for (const std::string& input : request.inputs) {
        std::error_code ignored;
        if (!FramePattern::parse(input) && !fs::is_regular_file(input, ignored))
            throw Failure(ExitCode::BadPicture,
                          "cannot read '" + input + "': there is no such file");
        addPicture(input);
    }
    findFrames();
}

void Workspace::findFrames() {
    std::vector<long> frames;
    if (!request.frames.empty())
        frames = parseFrames(request.frames);
    for (const std::string& input : request.inputs)
        if (const auto pattern = FramePattern::parse(input); pattern && frames.empty()) {
            frames = pattern->framesOnDisk();
            if (frames.empty())
                throw Failure(ExitCode::BadPicture, "there are no files " + input);
        }
    if (!frames.empty())
        frames_ = {*std::min_element(frames.begin(), frames.end()),
                   *std::max_element(frames.begin(), frames.end())};
}

Data Workspace::clock() const {
    constexpr double emptySeconds = 10;
    const auto [first, last] =
        frames_.value_or(std::pair(0L, std::lround(emptySeconds * request.framesPerSecond)));
    return {{"fps", request.framesPerSecond},
            {"first", first},
            {"last", last},
            {"isWanted", frames_.has_value()}};
}

std::size_t Workspace::addPicture(const std::string& file) {
    const std::string path = fs::absolute(file).lexically_normal().string();
    const auto known = std::find(pictures_.begin(), pictures_.end(), path);
    if (known == pictures_.end()) {
        pictures_.push_back(path);
        return pictures_.size() - 1;
    }
    return static_cast<std::size_t>(known - pictures_.begin());
}

std::size_t Workspace::addDrop(std::string_view name, std::string_view content) {
    if (content.size() > largestDrop || dropBytes_ + content.size() > largestDrops)
        throw Failure(ExitCode::Usage, "the dropped files are too large");
    // A folder for each, so that the file keeps its name.
    const fs::path folder = fs::path(folder_.path) / ("drop" + std::to_string(files_++));
    const fs::path file = folder / fs::path(name).filename();
    fs::create_directory(folder);
    if (!file.has_filename() || hostkit::writeFile(file, std::string(content)))
        throw Failure(ExitCode::RenderFailed, "the dropped file cannot be stored");
    dropBytes_ += content.size();
    return addPicture(file.string());
}

Data Workspace::pictures() const {
    Data list = Data::array();
    for (std::size_t i = 0; i < pictures_.size(); ++i)
        list.push_back({{"id", i},
                        {"name", fs::path(pictures_[i]).filename().string()},
                        {"file", pictures_[i]},
                        {"isTemporary", pictures_[i].starts_with(folderPrefix())}});
    return list;
}

std::string Workspace::folderPrefix() const {
    return fs::path(folder_.path).string() + "/";
}

std::string Workspace::withoutFolder(std::string text) const {
    const std::string prefix = folderPrefix();
    for (std::size_t at = 0; (at = text.find(prefix, at)) != std::string::npos;)
        text.erase(at, prefix.size());
    return text;
}

std::string Workspace::newFile(std::string_view extension) {
    const std::string name = "saved" + std::to_string(files_++);
    return (fs::path(folder_.path) / (name + std::string(extension))).string();
}

std::string Workspace::takeFile(std::string_view name) {
    const fs::path file = fs::path(folder_.path) / name;
    if (file.parent_path() != folder_.path || !name.starts_with("saved"))
        return {};
    std::error_code ignored;
    if (!fs::is_regular_file(file, ignored))
        return {};
    std::string content = readWholeFile(file.string(), ExitCode::RenderFailed);
    fs::remove(file, ignored);
    return content;
}

std::string Workspace::fileOf(const Data& number) const {
    const auto index = wholeNumber<std::size_t>(number);
    if (index >= pictures_.size())
        throw Failure(ExitCode::Usage, "there is no picture " + std::to_string(index));
    return pictures_[index];
}

void Workspace::namePictures(Data& asked) const {
    if (const auto picture = asked.find("picture"); picture != asked.end())
        *picture = picture->is_null() ? Data("") : Data(fileOf(*picture));
    if (const auto layers = asked.find("layers"); layers != asked.end())
        for (auto& layer : *layers)
            if (!layer.is_null())
                layer = fileOf(layer);
}

void Workspace::numberPictures(Data& reply) {
    const auto number = [this](Data& file) {
        file = !file.is_string() || file == "" ? Data() : Data(addPicture(file.get<std::string>()));
    };
    if (const auto picture = reply.find("picture"); picture != reply.end())
        number(*picture);
    if (const auto controls = reply.find("controls"); controls != reply.end())
        for (auto& control : *controls)
            if (control.value("kind", "") == "layer")
                number(control["value"]);
}

} // namespace pbhost::live
