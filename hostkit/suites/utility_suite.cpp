#include <string>

#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/memory_handles.h"
#include "hostkit/host.h"
#include "hostkit/project/undo.h"
#include "hostkit/services/text.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

UndoHistory* undoHistory() {
    return Host::current().project.undo.get();
}

A_Err registerWithAegp(void* /*refcon*/, const char* pluginName, AEGP_PluginID* id) {
    constexpr const char* call = "AEGP_RegisterWithAEGP";
    return contractCall<AEGP_UtilitySuite11>(call, [&] {
        if (pluginName == nullptr || id == nullptr)
            return misuse(call, "the name or the id pointer is null");
        std::vector<std::string>& names = Host::current().registeredPlugins;
        names.emplace_back(pluginName);
        *id = static_cast<AEGP_PluginID>(names.size());
        return PF_Err_NONE;
    });
}

A_Err startUndoGroup(const char* groupName) {
    constexpr const char* call = "AEGP_StartUndoGroup";
    return contractCall<AEGP_UtilitySuite11>(call, [&] {
        if (groupName == nullptr)
            return misuse(call, "the name is null");
        ledger::acquire(ledger::Kind::UndoGroup, undoHistory(), groupName);
        undoHistory()->startGroup(groupName);
        return PF_Err_NONE;
    });
}

A_Err endUndoGroup() {
    constexpr const char* call = "AEGP_EndUndoGroup";
    return contractCall<AEGP_UtilitySuite11>(call, [&] {
        if (!ledger::release(ledger::Kind::UndoGroup, undoHistory(), call))
            return PF_Err_BAD_CALLBACK_PARAM;
        undoHistory()->endGroup();
        return PF_Err_NONE;
    });
}

A_Err executeScript(AEGP_PluginID plugin, const char* script, A_Boolean platformEncoding,
                    AEGP_MemHandle* result, AEGP_MemHandle* error) {
    constexpr const char* call = "AEGP_ExecuteScript";
    return contractCall<AEGP_UtilitySuite11>(call, plugin, [&] {
        if (result != nullptr)
            *result = nullptr;
        if (error != nullptr)
            *error = nullptr;
        if (script == nullptr)
            return misuse(call, "the script is null");
        const ScriptResult outcome =
            Host::current().scripts.run(platformEncoding != 0 ? latin1ToUtf8(script) : script);
        if (outcome.value && result != nullptr)
            *result = newTextHandle(*outcome.value);
        if (!outcome.value && error != nullptr)
            *error = newTextHandle(outcome.error);
        return outcome.value ? PF_Err_NONE : PF_Err_INTERNAL_STRUCT_DAMAGED;
    });
}

} // namespace

const AEGP_UtilitySuite11& utilitySuite() {
    static const AEGP_UtilitySuite11 table = {registerWithAegp, startUndoGroup, endUndoGroup,
                                              executeScript};
    return table;
}

} // namespace hostkit::tables
