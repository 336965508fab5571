#include "hostkit/module/plugin.h"

#include <stdexcept>

#include "hostkit/calls/command_stack.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/effect/effect.h"
#include "hostkit/host.h"
#include "hostkit/module/library.h"
#include "hostkit/services/memory.h"
#include "hostkit/suites/basic_suite.h"
#include "hostkit/suites/tables.h"

namespace hostkit {

namespace {

// The properties that are needed to load and use the module.
void requireProperties(const Pipl& pipl) {
    for (const char* key : {"name", "wx86", "eMNA"})
        pipl.text(key);
    for (const char* key : {"eVER", "eGLO", "eGL2"})
        pipl.number(key);
}

Pipl readResource(std::filesystem::path path) {
    path.replace_extension(".pipl");
    Pipl pipl = readPipl(path);
    try {
        requireProperties(pipl);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path.string() + ": " + error.what());
    }
    return pipl;
}

EntryPoint loadEntry(const std::filesystem::path& path, const std::string& name) {
    void* entry = library::functionIn(library::load(path), name);
    if (entry == nullptr)
        throw std::runtime_error(path.string() + ": it has no function " + name);
    return reinterpret_cast<EntryPoint>(entry);
}

// Set in out_flags before each command, to check that the module only sets flags and clears none.
constexpr A_long hostFlag = 1 << 2;

void checkHostFlag(PF_Cmd command, PF_OutData& outData) {
    if ((outData.out_flags & hostFlag) == 0)
        ledger::fault(commandName(command) + " cleared a flag that it had not set");
    outData.out_flags &= ~hostFlag;
}

void compareWithResource(const Pipl& pipl, const char* key, A_u_long returned) {
    if (pipl.number(key) != returned)
        ledger::fault("PF_Cmd_GLOBAL_SETUP returned " + std::to_string(returned) + ", but " + key +
                      " of the resource is " + std::to_string(pipl.number(key)));
}

} // namespace

Plugin::Plugin(const std::filesystem::path& modulePath)
    : pipl_(readResource(modulePath)), entry_(loadEntry(modulePath, pipl_.text("wx86"))) {}

Plugin::~Plugin() {
    for (const auto& composition : Host::current().project.compositions)
        for (const auto& layer : composition->layers)
            std::erase_if(layer->effects,
                          [this](const auto& effect) { return effect->plugin == this; });
    if (isSetUp_)
        setDown();
}

PF_Err Plugin::setUp() {
    PF_InData inData = *Host::current().inData();
    PF_OutData outData{};
    const PF_Err error = call(PF_Cmd_GLOBAL_SETUP, inData, outData, nullptr, nullptr, nullptr);
    if (error != PF_Err_NONE)
        return error;
    outFlags_ = static_cast<A_u_long>(outData.out_flags);
    outFlags2_ = static_cast<A_u_long>(outData.out_flags2);
    compareWithResource(pipl_, "eVER", outData.my_version);
    compareWithResource(pipl_, "eGLO", outFlags_);
    compareWithResource(pipl_, "eGL2", outFlags2_);
    return error;
}

PF_Err Plugin::setDown() {
    return send(PF_Cmd_GLOBAL_SETDOWN);
}

PF_Err Plugin::about() {
    return send(PF_Cmd_ABOUT);
}

std::string Plugin::lastCommand() const {
    return commandName(lastCommand_);
}

PF_Err Plugin::send(PF_Cmd command) {
    PF_InData inData = *Host::current().inData();
    PF_OutData outData{};
    return call(command, inData, outData, nullptr, nullptr, nullptr);
}

PF_Err Plugin::call(PF_Cmd command, PF_InData& inData, PF_OutData& outData, PF_ParamDef** params,
                    PF_LayerDef* output, void* extra) {
    inData.inter = tables::interactCallbacks();
    inData.utils = &memory::callbacks();
    inData.pica_basicP = &suites::basicSuite();
    inData.global_data = globalData_;
    outData.global_data = globalData_;
    outData.out_flags |= hostFlag;
    lastCommand_ = command;
    const ActiveCommand active(command, inData);
    PF_Err error = PF_Err_INTERNAL_STRUCT_DAMAGED;
    try {
        error = entry_(command, &inData, &outData, params, output, extra);
    } catch (...) {
        ledger::fault(commandName(command) + " threw an exception");
    }
    storeGlobalData(command, error, outData);
    if (command != PF_Cmd_GLOBAL_SETUP)
        checkHostFlag(command, outData);
    return error;
}

void Plugin::storeGlobalData(PF_Cmd command, PF_Err error, const PF_OutData& outData) {
    switch (command) {
    case PF_Cmd_GLOBAL_SETUP:
        globalData_ = outData.global_data;
        isSetUp_ = true;
        break;
    case PF_Cmd_GLOBAL_SETDOWN:
        // If setdown failed, the module keeps its data, and setdown is sent again later.
        if (error == PF_Err_NONE)
            globalData_ = nullptr;
        isSetUp_ = globalData_ != nullptr;
        break;
    default:
        if (outData.global_data != globalData_)
            ledger::fault(commandName(command) + " changed the handle of the global data");
    }
}

} // namespace hostkit
