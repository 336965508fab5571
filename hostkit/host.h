// The substitute host: what a module sees of it during a command.
//
// The host owns the record and everything behind it. Its memory and its suites are the process's
// (see memory.h and suites.h); a Host only hands them out.
#pragma once

#include "sdk/pf_types.h"
#include "sdk/sp_basic.h"

namespace hostkit {

class Host {
public:
    Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The input record of a command; good as long as the Host is.
    PF_InData* inData() { return &inData_; }

private:
    PF_InData inData_;
};

} // namespace hostkit
