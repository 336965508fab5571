// A module that the host has loaded: its code, its global data, the commands that concern no
// instance.
//
// The host knows it by its file, by the resource beside it and by the one function that the
// resource names. The library stays in the process when the Plugin ends: OpenGL drivers do not
// survive being unloaded.
#pragma once

#include <filesystem>
#include <string>

#include "hostkit/calls/live_object.h"
#include "hostkit/module/pipl.h"
#include "sdk/pf_params.h"

namespace hostkit {

class Effect;

// A command as one call of the entry.
using EntryPoint = PF_Err (*)(PF_Cmd, PF_InData*, PF_OutData*, PF_ParamDef**, PF_LayerDef*, void*);

class Plugin {
public:
    // Loads the module and reads its resource. Throws std::runtime_error, with the file's name and
    // the reason. Sends no command yet.
    explicit Plugin(const std::filesystem::path& modulePath);
    // Takes its instances off the layers, and sends global setdown if global setup has been sent.
    // The Host must be there.
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // Global setup; the answer's version and flags must be those of the resource, else that is a
    // fault in the ledger.
    PF_Err setUp();
    PF_Err setDown();
    PF_Err about();

    // One command with the host's basics filled in (no instance, no parameters): for a test, or for
    // a command that has no other sender.
    PF_Err send(PF_Cmd command);

    // The same for any sender: fills in what belongs to the module, calls the entry, takes over the
    // handle of the global data. inData and outData are otherwise the caller's. What the module has
    // borrowed in between and not given back is a fault, and so is a flag of the host's own in
    // out_flags that is gone: only global setup has all of them to itself.
    PF_Err call(PF_Cmd command, PF_InData& inData, PF_OutData& outData, PF_ParamDef** params,
                PF_LayerDef* output, void* extra);

    const Pipl& pipl() const { return pipl_; }
    A_u_long outFlags() const { return outFlags_; } // of global setup, as the next
    A_u_long outFlags2() const { return outFlags2_; }
    PF_Handle globalData() const { return globalData_; }
    std::string lastCommand() const; // the newest that was sent, as the contract calls it

    LiveObject<Plugin> live{this}; // its number is the key by which effects are asked for

private:
    void takeOverGlobalData(PF_Cmd command, PF_Err error, const PF_OutData& outData);

    Pipl pipl_;
    EntryPoint entry_ = nullptr;
    PF_Handle globalData_ = nullptr;
    A_u_long outFlags_ = 0;
    A_u_long outFlags2_ = 0;
    PF_Cmd lastCommand_ = PF_Cmd_ABOUT;
    bool isSetUp_ = false; // global setup has been sent
};

} // namespace hostkit
