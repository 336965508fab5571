// A loaded module: its code, its global data, and the commands that concern no instance.
//
// The host knows only the module's file, the resource beside it, and the entry function that the
// resource names. The library stays loaded when the Plugin is destroyed, because OpenGL drivers do
// not survive being unloaded.
#pragma once

#include <filesystem>
#include <string>

#include "hostkit/calls/live_object.h"
#include "hostkit/module/pipl.h"
#include "sdk/pf_params.h"

namespace hostkit {

class Effect;

// The module's entry function: one call is one command.
using EntryPoint = PF_Err (*)(PF_Cmd, PF_InData*, PF_OutData*, PF_ParamDef**, PF_LayerDef*, void*);

class Plugin {
public:
    // Loads the module and reads its resource; sends no command. Throws std::runtime_error with the
    // file's name and the reason.
    explicit Plugin(const std::filesystem::path& modulePath);
    // Deletes the module's effects from all layers, then sends global setdown if global setup was
    // sent. Requires a Host.
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // Sends global setup. Records a fault if the returned version or flags differ from the
    // resource.
    PF_Err setUp();
    PF_Err setDown();
    PF_Err about();

    // Sends one command without an instance and without parameters.
    PF_Err send(PF_Cmd command);

    // Sends any command: fills in what belongs to the module, calls the entry function, and stores
    // the global data handle that it returns; the caller sets the rest of inData and outData.
    // Records a fault for anything that the command acquired and did not release, and, except for
    // global setup, if it clears a flag in out_flags that the host set.
    PF_Err call(PF_Cmd command, PF_InData& inData, PF_OutData& outData, PF_ParamDef** params,
                PF_LayerDef* output, void* extra);

    const Pipl& pipl() const { return pipl_; }
    A_u_long outFlags() const { return outFlags_; } // returned by global setup
    A_u_long outFlags2() const { return outFlags2_; }
    PF_Handle globalData() const { return globalData_; }
    std::string lastCommand() const; // name of the newest command, for example "PF_Cmd_RENDER"

    LiveObject<Plugin> live{this}; // its number is the plug-in's AEGP_InstalledEffectKey

private:
    void storeGlobalData(PF_Cmd command, PF_Err error, const PF_OutData& outData);

    Pipl pipl_;
    EntryPoint entry_ = nullptr;
    PF_Handle globalData_ = nullptr;
    A_u_long outFlags_ = 0;
    A_u_long outFlags2_ = 0;
    PF_Cmd lastCommand_ = PF_Cmd_ABOUT;
    bool isSetUp_ = false; // global setup was sent
};

} // namespace hostkit
