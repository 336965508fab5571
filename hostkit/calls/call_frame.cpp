#include "hostkit/calls/call_frame.h"

#include "hostkit/host.h"

namespace hostkit {

PF_Err misuseWithoutSuite(const char* call, const char* suite, A_long version) {
    return misuse(call, std::string(suite) + " " + std::to_string(version) + " is not acquired");
}

PF_Err checkPlugin(const char* call, AEGP_PluginID plugin) {
    if (Host::current().isRegistered(plugin))
        return PF_Err_NONE;
    return misuse(call, "no plug-in is registered under the id " + std::to_string(plugin));
}

} // namespace hostkit
