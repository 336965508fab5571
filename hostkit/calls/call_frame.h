// The frame of a function of the contract: counted, made to fail when a test wishes so, checked for
// its suite and its plug-in id, and closed to exceptions, since the module calls through plain C
// pointers.
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

// Keeps the misuse as a fault of the call; the code that the call answers.
inline PF_Err misuse(const char* call, const std::string& what) {
    ledger::fault(std::string(call) + ": " + what);
    return PF_Err_BAD_CALLBACK_PARAM;
}

// Of a suite's function that comes after the suite's last release, or before its first acquisition.
PF_Err misuseWithoutSuite(const char* call, const char* suite, A_long version);

// 0 for an id that the host gave to a module at its registration.
PF_Err checkPlugin(const char* call, AEGP_PluginID plugin);

// Runs the work of the call, which answers a PF_Err. `call` must live for ever. A function of a
// suite names it; a callback has none.
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

// The same for a function that is told the plug-in id of its caller.
template<class Suite, class Work>
PF_Err contractCall(const char* call, AEGP_PluginID plugin, const Work& work) {
    return contractCall<Suite>(call, [&]() -> PF_Err {
        const PF_Err error = checkPlugin(call, plugin);
        return error != PF_Err_NONE ? error : work();
    });
}

} // namespace hostkit
