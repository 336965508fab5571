#include "pbhost/scene.h"

#include <cstring>
#include <iostream>
#include <utility>

#include "hostkit/text.h"
#include "pbhost/effect_file.h"
#include "pbhost/failure.h"
#include "pbhost/load_check.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

std::shared_ptr<hostkit::Footage> makeFootage(Source source) {
    auto footage = std::make_shared<hostkit::Footage>();
    Picture& picture = source.picture;
    footage->name = std::move(source.file);
    footage->width = static_cast<int>(picture.width);
    footage->height = static_cast<int>(picture.height);
    footage->pixels.width = footage->width;
    footage->pixels.height = footage->height;
    footage->pixels.channelBytes = static_cast<int>(bytesPerChannel(picture.depth));
    footage->pixels.rowBytes = static_cast<int>(picture.rowBytes);
    footage->pixels.data = std::move(picture.pixels);
    return footage;
}

hostkit::Layer& makeLayer(hostkit::Host& host, Source source) {
    const Picture& picture = source.picture;
    host.project.channelBytes = static_cast<int>(bytesPerChannel(picture.depth));
    hostkit::Composition& composition = host.project.addComposition(
        "pbhost", static_cast<int>(picture.width), static_cast<int>(picture.height));
    return composition.addLayer("picture", makeFootage(std::move(source)));
}

// The endings by which the effect knows a marker that names its file.
bool canBeMarker(const std::string& path) {
    for (const char* ending : {"pbk", "PBK", "pbg", "PBG"})
        if (path.ends_with(ending))
            return true;
    return false;
}

void addMarker(hostkit::Layer& layer, const std::string& comment) {
    hostkit::StreamValue value;
    value.marker = std::make_shared<hostkit::Marker>();
    value.marker->comment = hostkit::toUtf16(comment);
    hostkit::Stream& markers = *layer.stream(AEGP_LayerStream_MARKER);
    markers.setKeyframe(markers.addKeyframe(0), value);
}

} // namespace

Source readSource(const std::string& file, std::optional<Depth> depth) {
    try {
        return {readPicture(file, depth), fs::absolute(file).string()};
    } catch (const PictureError& error) {
        throw Failure(ExitCode::BadPicture, error.what());
    }
}

Source transparentSource(unsigned width, unsigned height, Depth depth) {
    try {
        return {makePicture(width, height, depth), ""};
    } catch (const PictureError& error) {
        throw Failure(ExitCode::Usage, error.what());
    }
}

Scene::Scene(Session& owner, Source layerSource)
    : session(owner), layer(makeLayer(owner.host, std::move(layerSource))),
      effect(*layer.effects.emplace_back(std::make_unique<hostkit::Effect>(*owner.plugin, layer))) {
}

void Scene::apply(const std::string& file) {
    requireReadable(file);
    shownName_ = file_ = file;
    const std::string path = fs::absolute(file).string();
    if (canBeMarker(path))
        addMarker(layer, path);
    else
        session.dialogs.prepare({path});
    session.require(effect.apply());
    requireGraph();
}

void Scene::open(const std::string& project, const std::vector<std::byte>& flatBlock) {
    shownName_ = project;
    session.require(effect.open(flatBlock));
    if (!hasGraph(effect)) {
        session.require(effect.doDialog()); // the effect asks where the file is
        session.require(effect.updateParamsUi());
    }
    requireGraph();
}

void Scene::requireGraph() {
    messages = session.takeMessages();
    if (!hasGraph(effect))
        throw cannotBeRun(session.host, shownName_, file(), messages);
}

void Scene::checkPrograms() {
    if (!messages.empty())
        std::cerr << warningsOfLoad(session, shownName_, file(), messages);
}

AEGP_LayerIDVal Scene::addLayer(Source source) {
    return layer.composition->addLayer("picture", makeFootage(std::move(source))).id;
}

std::string Scene::fileOf(AEGP_LayerIDVal id) const {
    const hostkit::Layer* found = layer.composition->findLayer(id);
    return found == nullptr ? "" : found->source->name;
}

// For messages alone: the block is the effect's own. Its path stands behind two numbers.
const std::string& Scene::file() {
    constexpr std::size_t pathAt = 8;
    if (!file_.empty())
        return file_;
    const std::vector<std::byte> block = effect.save();
    session.require(effect.updateParamsUi());
    if (block.size() > pathAt) {
        const char* text = reinterpret_cast<const char*>(block.data()) + pathAt;
        file_.assign(text, strnlen(text, block.size() - pathAt));
    }
    return file_;
}

} // namespace pbhost
