// The frame of a function of the contract: counted, made to fail when a test wishes so, and closed
// to exceptions, since the module calls through plain C pointers.
#pragma once

#include <exception>
#include <new>
#include <string>

#include "hostkit/calls.h"
#include "hostkit/ledger.h"
#include "sdk/pf_types.h"

namespace hostkit {

// Keeps the misuse as a fault of the call; the code that the call answers.
inline PF_Err misuse(const char* call, const std::string& what) {
    ledger::fault(std::string(call) + ": " + what);
    return PF_Err_BAD_CALLBACK_PARAM;
}

// Runs the work of the call, which answers a PF_Err. `call` must live for ever.
template<class Work>
PF_Err contractCall(const char* call, const Work& work) {
    try {
        if (const PF_Err error = calls::enter(call); error != 0)
            return error;
        return work();
    } catch (const std::bad_alloc&) {
        return PF_Err_OUT_OF_MEMORY;
    } catch (const std::exception& error) {
        misuse(call, error.what());
        return PF_Err_INTERNAL_STRUCT_DAMAGED;
    }
}

} // namespace hostkit
