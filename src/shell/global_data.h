// What the effect keeps for as long as it is loaded: the OpenGL device, the graphs that were
// loaded, the list of live instances, the error log. There is one; the host holds its handle.
//
// Lives on the host's heap: every operation needs a running command.
#pragma once

#include <memory>
#include <string_view>

#include "engine/pb_graph.h"
#include "gpu/device.h"
#include "sdk/pf_types.h"
#include "shell/plugin_facts.h"
#include "support/text.h"

// The object that lies in a locked handle of the host's heap; null for a null handle.
template<class T>
T* objectIn(PF_Handle handle) {
    return handle == nullptr ? nullptr : static_cast<T*>(payloadOf(handle));
}

struct GraphCacheEntry {
    NarrowString path;
    std::unique_ptr<pbGraph> graph; // never null; dies with the device's context current
};

// The members go in the reverse of their order, the device after all that could need it.
class GlobalData : public aeBase {
public:
    // Throws `long` 516 when the host cannot register the effect.
    explicit GlobalData(const PF_InData& inData);
    ~GlobalData() override;

    // True if a graph for the path is in the cache afterwards. The key is the path's text: a file
    // is read once, for all instances that name it alike. What went wrong is told on the Info
    // panel, by the engine in any case, by the loading itself if verbose.
    bool loadGraph(const PF_InData& inData, std::string_view path, bool verbose);

    // Null: no graph was loaded from that path.
    pbGraph* findGraph(std::string_view path) const;

    HostVector<GraphCacheEntry> graphCache; // grows only
    A_long pluginId = 0;                    // under which the host knows the effect
    OwnDevice device{pluginName};
    const char* glVendor = nullptr; // texts of the driver's, null without a context
    const char* glVersion = nullptr;
    const char* glslVersion = nullptr;
    NarrowString errorLog;               // what shaders failed of, until it is exported
    HostVector<PF_Handle> liveSequences; // the handles of all SequenceData objects, in no order

private:
    // False, and the graph is gone, for a null graph and for a path that is there already.
    bool addGraph(std::string_view path, std::unique_ptr<pbGraph>&& graph);
};

// The object that the host hands in. Throws `long` 512 when the host has none.
GlobalData& globalDataOf(const PF_InData& inData);
