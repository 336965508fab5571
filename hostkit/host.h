// The substitute host: what a module sees of it, and the open project.
//
// There is one host at a time in a process, because the contract's callbacks carry no context. The
// constructor resets the ledger, the counts of calls and all handles. The destructor destroys the
// project first; the ledger stays readable afterwards.
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
    // Registers every suite. The preferences are read from the file and written back at each
    // change; an empty path stores them in memory only. Throws std::logic_error if a host exists,
    // std::runtime_error if the preferences are invalid.
    explicit Host(const std::filesystem::path& preferencesFile = {});
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The host of this process. Throws std::logic_error if there is none.
    static Host& current();

    // An input record with only the host's tables set, for a command that concerns no instance.
    // Valid as long as the Host.
    PF_InData* inData() { return &inData_; }

    // Whether a module registered under that id; the first id is 1.
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
