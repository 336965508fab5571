// Loads a graph from a path into the cache.
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "engine/pixels/channel_order.h"
#include "gpu/features.h"
#include "host/host_services.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"
#include "shell/controls/control_layout.h"
#include "shell/global_data.h"
#include "shell/instance/report_handlers.h"
#include "support/effect_files.h"
#include "support/files.h"
#include "support/outcome_texts.h"

namespace {

// Shows messages about one load on the Info panel, if verbose.
class LoadReporter {
public:
    LoadReporter(const PF_InData& inData, bool verbose) : inData_(inData), isVerbose_(verbose) {}

    void report(std::string_view line1, std::string_view line2) const {
        if (isVerbose_)
            infoPanel2(inData_.pica_basicP, NarrowString(line1).c_str(),
                       NarrowString(line2).c_str());
    }

private:
    const PF_InData& inData_;
    bool isVerbose_;
};

// Null if the graph cannot be rendered. The environment variable is for hosts that render many
// frames of few graphs: frames are faster, and each graph keeps graphics memory.
template<class Model>
std::unique_ptr<pbGraph> buildGraph(const Model& model) {
    auto graph = makeObject<pbGraph>(model, hostSwizzle);
    graph->keepsTextures = std::getenv("TVELMARONDINE_KEEP_TEXTURES") != nullptr;
    if (!isRunnable(*graph))
        graph.reset();
    return graph;
}

std::unique_ptr<pbGraph> graphFromText(const Device& device, std::string_view text) {
    pbGraphInfo info;
    readGraphText(text, info);
    const ContextSwitch inContext(device);
    return buildGraph(info);
}

std::unique_ptr<pbGraph> kernelFromText(const Device& device, std::string_view text) {
    pbKernelInfo info;
    PBKParser(text, info).parseKernel();
    const ContextSwitch inContext(device);
    return buildGraph(info);
}

// The first OpenGL feature that the device lacks; null: none. Building a graph would call it.
const char* missingOf(const Device& device) {
    const ContextSwitch inContext(device);
    return missingFeature();
}

} // namespace

bool GlobalData::loadGraph(const PF_InData& inData, std::string_view path, bool verbose) {
    const LoadReporter reporter(inData, verbose);
    const bool isGraph = endsLikeGraph(path);
    const LoadTexts& texts = isGraph ? graphLoadTexts : kernelLoadTexts;
    if (const pbGraph* known = findGraph(path)) {
        reporter.report(texts.fromMemory, known->name);
        return true;
    }
    if (!isGraph && !endsLikeKernel(path)) {
        reporter.report("Unknown file extention:", path);
        return false;
    }
    _JST::File<aeAllocator> file{_JST::String<aeAllocator>(path)};
    if (!file.open('r')) {
        reporter.report(texts.cannotOpen, path);
        return false;
    }
    if (const char* missing = missingOf(device)) {
        reporter.report(openGlLacks, missing);
        return false;
    }
    const _JST::String<aeAllocator> text = file.read(0);
    if (!file.wasReadWhole()) { // a part of a kernel may be another kernel
        reporter.report(texts.cannotOpen, path);
        return false;
    }
    file.close();
    const std::uint64_t reportsBefore = infoMessageCount();
    std::unique_ptr<pbGraph> graph =
        isGraph ? graphFromText(device, text.text()) : kernelFromText(device, text.text());
    if (graph == nullptr) {
        if (infoMessageCount() == reportsBefore)
            reporter.report(texts.cannotRun, path);
        return false;
    }
    assignSlots(*graph);
    addGraph(path, std::move(graph));
    const pbGraph& loaded = *findGraph(path);
    reporter.report(texts.fromFile, loaded.name);
    loaded.reportGraph();
    return true;
}

pbGraph* GlobalData::findGraph(std::string_view path) const {
    const auto found = std::find_if(graphCache.begin(), graphCache.end(),
                                    [&](const auto& entry) { return entry.path == path; });
    return found == graphCache.end() ? nullptr : found->graph.get();
}

bool GlobalData::addGraph(std::string_view path, std::unique_ptr<pbGraph>&& graph) {
    const ContextSwitch inContext(device); // a graph that is not added is destroyed here
    std::unique_ptr<pbGraph> taken = std::move(graph);
    if (taken == nullptr || findGraph(path) != nullptr)
        return false;
    GraphCacheEntry entry{NarrowString(path), nullptr};
    graphCache.reserve(graphCache.size() + 1);
    entry.graph = std::move(taken);
    graphCache.push_back(std::move(entry));
    return true;
}
