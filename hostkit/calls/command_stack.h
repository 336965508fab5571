// The commands that the module is working on: one while it answers the host, more when a command
// is sent in the middle of another. Every callback serves the newest one and no other.
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
    const PF_ParamDef* record;               // the module's
    std::unique_ptr<CheckedOutWorld> pixels; // of a layer control; else null
};

class ActiveCommand {
public:
    // From now on the newest.
    ActiveCommand(PF_Cmd commandNumber, const PF_InData& asSent);
    // Whatever is acquired during the command and not released is a fault, and the reverse.
    ~ActiveCommand();
    ActiveCommand(const ActiveCommand&) = delete;
    ActiveCommand& operator=(const ActiveCommand&) = delete;

    static ActiveCommand* newest(); // null: the module is at rest

    // The newest command, if it is one of that effect; else null, with a fault of the call.
    static ActiveCommand* of(PF_ProgPtr effect, const char* call);

    Effect& effect() const; // of a command that concerns an instance

    const PF_Cmd number;
    const PF_InData inData;
    std::vector<ParameterCheckout> parameters;

private:
    std::vector<std::string> acquiredBefore_;
    ActiveCommand* older_;
};

// As the contract calls it.
std::string commandName(PF_Cmd number);

} // namespace hostkit
