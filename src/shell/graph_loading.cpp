// From a path to a running graph in the cache.
#include <algorithm>
#include <utility>

#include "engine/channel_order.h"
#include "gpu/features.h"
#include "host/host_services.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"
#include "shell/control_layout.h"
#include "shell/global_data.h"
#include "shell/report_handlers.h"
#include "support/files.h"

namespace {

// Shows messages about one load on the Info panel, if it is verbose.
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

struct FileKind {
    const char* fromMemory;
    const char* fromFile;
    const char* cannotOpen;
    const char* cannotRun;
};

constexpr FileKind graphKind = {
    "Graph has been loaded from memory",
    "Graph has been loaded from file:", "Graph file could not be opened:", "Graph can not be run:"};
constexpr FileKind kernelKind = {"Kernel has been loaded from memory",
                                 "Kernel has been loaded from file:",
                                 "Kernel file could not be opened:", "Kernel can not be run:"};

bool endsIn(std::string_view path, std::string_view letters) {
    return !path.empty() && letters.find(path.back()) != std::string_view::npos;
}

// Null when the graph cannot be rendered.
template<class Model>
std::unique_ptr<pbGraph> buildGraph(const Model& model) {
    auto graph = makeObject<pbGraph>(model, hostSwizzle);
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
    const bool isGraph = endsIn(path, "gG");
    const FileKind& kind = isGraph ? graphKind : kernelKind;
    if (const pbGraph* known = findGraph(path)) {
        reporter.report(kind.fromMemory, known->name);
        return true;
    }
    if (!isGraph && !endsIn(path, "kK")) {
        reporter.report("Unknown file extention:", path);
        return false;
    }
    _JST::File<aeAllocator> file{_JST::String<aeAllocator>(path)};
    if (!file.open('r')) {
        reporter.report(kind.cannotOpen, path);
        return false;
    }
    if (const char* missing = missingOf(device)) {
        reporter.report("OpenGL can not be used, it lacks:", missing);
        return false;
    }
    const _JST::String<aeAllocator> text = file.read(0);
    if (!file.wasReadWhole()) { // a part of a kernel may be another kernel
        reporter.report(kind.cannotOpen, path);
        return false;
    }
    file.close();
    const std::uint64_t reportsBefore = infoMessageCount();
    std::unique_ptr<pbGraph> graph =
        isGraph ? graphFromText(device, text.text()) : kernelFromText(device, text.text());
    if (graph == nullptr) {
        if (infoMessageCount() == reportsBefore)
            reporter.report(kind.cannotRun, path);
        return false;
    }
    assignSlots(*graph);
    addGraph(path, std::move(graph));
    const pbGraph& loaded = *findGraph(path);
    reporter.report(kind.fromFile, loaded.name);
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
