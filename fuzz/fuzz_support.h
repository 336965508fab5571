// Shared code of the fuzz targets: a running command, an instance of the effect behind the module's
// entry point, and the check that no input leaves anything allocated.
//
// Findings other than crashes end the process by fail(); libFuzzer reports the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "command/command_scope.h"
#include "hostkit/effect/effect.h"
#include "hostkit/host.h"
#include "hostkit/module/plugin.h"

// Called by libFuzzer for each input; must return 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

[[noreturn]] void fail(const std::string& why);
inline void require(bool condition, const char* why) {
    if (!condition)
        fail(why);
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// A host without a module, which exists until the process ends.
hostkit::Host& bareHost();

// Fails if the host recorded a fault, or if more handles are live than `expectedHandles`.
void requireNothingLeft(std::size_t expectedHandles);

// Runs the work inside a command, which the host's heap needs, and checks that all memory was
// released.
template<class Work>
void inCommand(Work work) {
    hostkit::Host& host = bareHost();
    {
        const CommandScope scope(PF_Cmd_SMART_RENDER, 0, host.inData());
        work();
    }
    requireNothingLeft(0);
}

// A host with the module set up, one layer of 4 by 4 pixels and an instance of the effect on it
// after parameter setup. It exists until the process ends.
struct Instance {
    Instance();

    // Sends sequence resetup with this flat block. The instance must have no sequence data, and has
    // some afterwards.
    void open(std::string_view flatBlock);
    // Flattens, sends sequence setdown, and returns the flat block. Fails if more handles are live
    // than after the first call, which fills the module's own tables.
    std::string close();

    hostkit::Host host;
    hostkit::Plugin plugin;
    hostkit::Layer& layer;
    hostkit::Effect& effect;

private:
    std::size_t handles_ = 0; // live handles without sequence data; 0: not counted yet
};

// The path in a flat block of either version; empty if there is none.
std::string pathOfBlock(std::string_view block);

} // namespace fuzz
