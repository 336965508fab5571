// The effect's data between global setup and global setdown: the OpenGL device, the loaded graphs,
// the list of live instances, the error log. There is one object; the host has its handle.
//
// It is on the host's heap: every operation needs a running command.
#pragma once

#include <memory>
#include <string_view>

#include "engine/graph/pb_graph.h"
#include "gpu/device.h"
#include "sdk/pf_types.h"
#include "shell/plugin_facts.h"
#include "support/text.h"

// The object in a handle of the host's heap, which is always locked; null for a null handle.
template<class T>
T* objectIn(PF_Handle handle) {
    return handle == nullptr ? nullptr : static_cast<T*>(payloadOf(handle));
}

struct GraphCacheEntry {
    NarrowString path;
    std::unique_ptr<pbGraph>
        graph; // never null; its destruction needs the device's context current
};

// The graphs are destroyed with the device's context current, before the device.
class GlobalData : public aeBase {
public:
    // Throws `long` 516 if the host cannot register the effect.
    explicit GlobalData(const PF_InData& inData);
    ~GlobalData() override;

    // True if a graph for the path is in the cache afterwards. The key is the path's text: a file
    // is read once for all instances with the same path. Errors are shown on the Info panel: those
    // of the engine always, those of loading if verbose.
    bool loadGraph(const PF_InData& inData, std::string_view path, bool verbose);

    // Null: no graph was loaded from that path.
    pbGraph* findGraph(std::string_view path) const;

    HostVector<GraphCacheEntry> graphCache; // grows only
    A_long pluginId = 0;                    // assigned by the host
    OwnDevice device{pluginName};
    const char* glVendor = nullptr; // the driver's texts; null without a context
    const char* glVersion = nullptr;
    const char* glslVersion = nullptr;
    NarrowString errorLog;               // the reasons of failed shaders, until exported
    HostVector<PF_Handle> liveSequences; // the handles of all SequenceData objects, in no order

private:
    // Returns false and destroys the graph if it is null or if the path is already in the cache.
    bool addGraph(std::string_view path, std::unique_ptr<pbGraph>&& graph);
};

// The object in the input record's handle. Throws `long` 512 if the handle is null.
GlobalData& globalDataOf(const PF_InData& inData);
