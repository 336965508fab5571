#include "hostkit/calls/command_stack.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "hostkit/calls/call_frame.h"

namespace hostkit {

namespace {

ActiveCommand* newestCommand = nullptr;

constexpr std::array<std::pair<PF_Cmd, const char*>, 14> commandNames = {{
    {PF_Cmd_ABOUT, "PF_Cmd_ABOUT"},
    {PF_Cmd_GLOBAL_SETUP, "PF_Cmd_GLOBAL_SETUP"},
    {PF_Cmd_GLOBAL_SETDOWN, "PF_Cmd_GLOBAL_SETDOWN"},
    {PF_Cmd_PARAMS_SETUP, "PF_Cmd_PARAMS_SETUP"},
    {PF_Cmd_SEQUENCE_SETUP, "PF_Cmd_SEQUENCE_SETUP"},
    {PF_Cmd_SEQUENCE_RESETUP, "PF_Cmd_SEQUENCE_RESETUP"},
    {PF_Cmd_SEQUENCE_FLATTEN, "PF_Cmd_SEQUENCE_FLATTEN"},
    {PF_Cmd_SEQUENCE_SETDOWN, "PF_Cmd_SEQUENCE_SETDOWN"},
    {PF_Cmd_DO_DIALOG, "PF_Cmd_DO_DIALOG"},
    {PF_Cmd_RENDER, "PF_Cmd_RENDER"},
    {PF_Cmd_USER_CHANGED_PARAM, "PF_Cmd_USER_CHANGED_PARAM"},
    {PF_Cmd_UPDATE_PARAMS_UI, "PF_Cmd_UPDATE_PARAMS_UI"},
    {PF_Cmd_SMART_PRE_RENDER, "PF_Cmd_SMART_PRE_RENDER"},
    {PF_Cmd_SMART_RENDER, "PF_Cmd_SMART_RENDER"},
}};

std::vector<std::string> sortedAcquisitions() {
    std::vector<std::string> all = ledger::outstanding();
    std::ranges::sort(all);
    return all;
}

void faultForEach(const std::vector<std::string>& all, const std::vector<std::string>& without,
                  const std::string& sentence) {
    std::vector<std::string> difference;
    std::ranges::set_difference(all, without, std::back_inserter(difference));
    for (const std::string& thing : difference)
        ledger::fault(sentence + thing);
}

} // namespace

ActiveCommand::ActiveCommand(PF_Cmd commandNumber, const PF_InData& asSent)
    : number(commandNumber), inData(asSent), acquiredBefore_(sortedAcquisitions()),
      older_(std::exchange(newestCommand, this)) {}

ActiveCommand::~ActiveCommand() {
    const std::vector<std::string> acquiredAfter = sortedAcquisitions();
    faultForEach(acquiredAfter, acquiredBefore_, commandName(number) + " did not release: ");
    faultForEach(acquiredBefore_, acquiredAfter,
                 commandName(number) + " released what it had not acquired: ");
    // The destructor frees their pixels, so the module can no longer check them in.
    for (const ParameterCheckout& checkout : parameters)
        ledger::release(ledger::Kind::Parameter, checkout.record, "checkin_param");
    newestCommand = older_;
}

ActiveCommand* ActiveCommand::newest() {
    return newestCommand;
}

ActiveCommand* ActiveCommand::of(PF_ProgPtr effect, const char* call) {
    if (effect != nullptr && newestCommand != nullptr && newestCommand->inData.effect_ref == effect)
        return newestCommand;
    misuse(call, newestCommand == nullptr
                     ? "no command is running"
                     : "the effect is not the one of " + commandName(newestCommand->number));
    return nullptr;
}

Effect& ActiveCommand::effect() const {
    return *reinterpret_cast<Effect*>(inData.effect_ref);
}

std::string commandName(PF_Cmd number) {
    const auto found =
        std::ranges::find(commandNames, number, &std::pair<PF_Cmd, const char*>::first);
    return found == commandNames.end() ? "command " + std::to_string(number) : found->second;
}

} // namespace hostkit
