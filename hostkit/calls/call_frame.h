// Wrapper for every function that a module calls: it counts the call, injects a failure if a test
// asks for one, checks that the suite is acquired and that the plug-in id is registered, and
// converts exceptions to error codes, because the module calls through plain C pointers.
#pragma once

#include <exception>
#include <new>
#include <string>
#include <type_traits>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/suites/basic_suite.h"
#include "sdk/aegp_types.h"

namespace hostkit {

// Records the misuse as a fault of the call and returns the error code for the call.
inline PF_Err misuse(const char* call, const std::string& what) {
    ledger::fault(std::string(call) + ": " + what);
    return PF_Err_BAD_CALLBACK_PARAM;
}

// Misuse of a suite's function before the suite's first acquisition or after its last release.
PF_Err misuseWithoutSuite(const char* call, const char* suite, A_long version);

// PF_Err_NONE if the host gave this id to a module at registration; otherwise records a fault.
PF_Err checkPlugin(const char* call, AEGP_PluginID plugin);

// Runs `work`, which returns a PF_Err. `call` must be a string with static storage. A suite
// function names its suite as template argument; a callback has none.
template<class Suite = void, class Work>
PF_Err contractCall(const char* call, const Work& work) {
    try {
        if (const PF_Err error = calls::enter(call); error != 0)
            return error;
        if constexpr (!std::is_void_v<Suite>) {
            if (!suites::isAcquired(Suite::name, Suite::version))
                return misuseWithoutSuite(call, Suite::name, Suite::version);
        }
        return work();
    } catch (const std::bad_alloc&) {
        return PF_Err_OUT_OF_MEMORY;
    } catch (const std::exception& error) {
        misuse(call, error.what());
        return PF_Err_INTERNAL_STRUCT_DAMAGED;
    }
}

// The same for a function that receives the plug-in id of its caller.
template<class Suite, class Work>
PF_Err contractCall(const char* call, AEGP_PluginID plugin, const Work& work) {
    return contractCall<Suite>(call, [&]() -> PF_Err {
        const PF_Err error = checkPlugin(call, plugin);
        return error != PF_Err_NONE ? error : work();
    });
}

} // namespace hostkit
