// The substitute host: what a module sees of it, and the project that it has open.
//
// One host at a time in a process: the contract's callbacks carry no context, so they serve the one
// that is there. It starts with an empty ledger, no calls counted, no live handle. When it ends,
// its project ends first, and the ledger stays as it is for whoever wants to look.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hostkit/project/project.h"
#include "hostkit/services/info_panel.h"
#include "hostkit/services/preferences.h"
#include "hostkit/services/scripts.h"
#include "sdk/aegp_types.h"
#include "sdk/sp_basic.h"

namespace hostkit {

class Host {
public:
    // Offers every suite. The preferences are read from the file and written back to it at each
    // change; an empty path keeps them in memory. Throws std::logic_error when there is a host
    // already, std::runtime_error for broken preferences.
    explicit Host(const std::filesystem::path& preferencesFile = {});
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The host of this process. Throws std::logic_error when there is none.
    static Host& current();

    // An input record with the host's tables filled in and nothing else: for a command that
    // concerns no instance. Good as long as the Host is.
    PF_InData* inData() { return &inData_; }

    // Whether a module has registered under that id; the id of the first is 1.
    bool isRegistered(AEGP_PluginID plugin) const;

    Preferences preferences;
    InfoPanel infoPanel;
    ScriptRunner scripts;
    Project project;
    std::vector<std::string> registeredPlugins; // their names, in the order of their ids

private:
    PF_InData inData_{};
};

} // namespace hostkit
