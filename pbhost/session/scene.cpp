#include "pbhost/session/scene.h"

#include <string_view>
#include <utility>

#include "pbhost/files/effect_file.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/load_check.h"
#include "support/effect_files.h"
#include "support/flat_block.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

hostkit::Layer& makeLayer(hostkit::Host& host, LayerSource source) {
    const Picture& picture = source.picture;
    host.project.componentBytes = static_cast<int>(componentBytesOf(picture.depth));
    hostkit::Composition& composition = host.project.addComposition(
        "pbhost", static_cast<int>(picture.width), static_cast<int>(picture.height));
    return composition.addLayer("picture", footageOf(std::move(source)));
}

} // namespace

std::shared_ptr<hostkit::Footage> footageOf(LayerSource source) {
    Picture& picture = source.picture;
    return hostkit::makeFootage(std::move(source.file),
                                {static_cast<int>(picture.width), static_cast<int>(picture.height),
                                 static_cast<int>(componentBytesOf(picture.depth)),
                                 static_cast<int>(picture.rowBytes), std::move(picture.pixels)});
}

std::string pathInBlock(const std::vector<std::byte>& block) {
    const std::string_view bytes(reinterpret_cast<const char*>(block.data()), block.size());
    return bytes.ends_with('\0') ? std::string(readFlatBlock(bytes).filePath) : "";
}

LayerSource readSource(const std::string& file, const ReadOptions& options) {
    return {readPicture(file, options), fs::absolute(file).string()};
}

LayerSource transparentSource(unsigned width, unsigned height, Depth depth) {
    return {makePicture(width, height, depth), ""};
}

Scene::Scene(Session& owner, LayerSource layerSource)
    : session(owner), layer(makeLayer(owner.host, std::move(layerSource))),
      effect(hostkit::addEffect(*owner.plugin, layer)) {}

Scene::Scene(Scene& above)
    : session(above.session), layer(above.layer),
      effect(hostkit::addEffect(*session.plugin, layer)) {}

void Scene::apply(const std::string& file) {
    requireReadable(file);
    shownName_ = file_ = file;
    const std::string path = fs::absolute(file).string();
    if (isMarkerPath(path))
        layer.addMarker(0, path);
    else
        session.dialogs.prepare({path});
    session.require(effect.apply());
    requireGraph();
}

void Scene::open(const std::string& project, const std::vector<std::byte>& flatBlock,
                 const std::string& otherPlace) {
    if (pathInBlock(flatBlock).empty())
        throw Failure(
            ExitCode::Usage,
            project +
                ": the project is damaged: its \"data\" contains no path of a kernel or graph");
    shownName_ = project;
    session.require(effect.open(flatBlock));
    if (!hasGraph(effect)) {
        if (!otherPlace.empty())
            session.dialogs.prepare({otherPlace});
        session.require(effect.doDialog()); // the effect opens its file dialog
        session.require(effect.updateParamsUi());
    }
    requireGraph();
}

void Scene::requireGraph() {
    messages = session.takeMessages();
    if (!hasGraph(effect))
        throw cannotBeRun(session.host, shownName_, file(), messages);
}

std::size_t Scene::checkFile(const FindingOptions& options) {
    const FileReport report = reportOnFile(session, file(), messages);
    requireGood(report, shownName_, options);
    return report.inputs;
}

AEGP_LayerIDVal Scene::addLayer(LayerSource source) {
    return layer.composition->addLayer("picture", footageOf(std::move(source))).id;
}

std::string Scene::fileOf(AEGP_LayerIDVal id) const {
    const hostkit::Layer* found = layer.composition->findLayer(id);
    return found == nullptr ? "" : found->source->name;
}

const std::string& Scene::file() {
    if (!file_.empty())
        return file_;
    file_ = pathInBlock(effect.save());
    session.require(effect.updateParamsUi());
    return file_;
}

} // namespace pbhost
