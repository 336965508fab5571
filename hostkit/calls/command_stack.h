// The stack of commands that the module is executing: normally one, more if the host sends a
// command during another. Callbacks always act on the newest one.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostkit/effect/frames.h"
#include "sdk/pf_params.h"

namespace hostkit {

class Effect;

// A parameter that the running command has checked out.
struct ParameterCheckout {
    const PF_ParamDef* record;               // owned by the module
    std::unique_ptr<CheckedOutWorld> pixels; // of a layer control; null for other kinds
};

class ActiveCommand {
public:
    // Becomes the newest command.
    ActiveCommand(PF_Cmd commandNumber, const PF_InData& asSent);
    // Records a fault for each thing that the command acquired and did not release, or released
    // without having acquired it.
    ~ActiveCommand();
    ActiveCommand(const ActiveCommand&) = delete;
    ActiveCommand& operator=(const ActiveCommand&) = delete;

    static ActiveCommand* newest(); // null: no command is running

    // The newest command if it was sent to that effect; otherwise null, and a fault is recorded.
    static ActiveCommand* of(PF_ProgPtr effect, const char* call);

    Effect& effect() const; // only for a command that was sent to an instance

    const PF_Cmd number;
    const PF_InData inData;
    std::vector<ParameterCheckout> parameters;

private:
    std::vector<std::string> acquiredBefore_;
    ActiveCommand* older_;
};

// The contract's name of a command, for example "PF_Cmd_RENDER".
std::string commandName(PF_Cmd number);

} // namespace hostkit
