// What the fuzz targets share: a running command for the code that needs one, an instance of the
// effect for the code behind the module's entry point, and the check that each input left nothing.
//
// A finding that is not a crash ends the process by fail(), which libFuzzer reports with the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "command/command_scope.h"
#include "hostkit/effect/effect.h"
#include "hostkit/host.h"
#include "hostkit/module/plugin.h"

// The entry that libFuzzer calls for each input; it must return 0.
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

// A host without a module. It lives until the process ends.
hostkit::Host& bareHost();

// Fails if the host found a misuse, or if more handles are live than `expectedHandles`.
void requireNothingLeft(std::size_t expectedHandles);

// Runs the work inside a command, which the classes of the host's heap need, and checks that all of
// its memory was released.
template<class Work>
void inCommand(Work work) {
    hostkit::Host& host = bareHost();
    {
        const CommandScope scope(PF_Cmd_SMART_RENDER, 0, host.inData());
        work();
    }
    requireNothingLeft(0);
}

// A host with the module set up, one layer of 4 by 4 pixels and an instance of the effect on it,
// to which parameter setup was sent. It lives until the process ends.
struct Instance {
    Instance();

    // Sequence resetup with this block as the project's, as on opening it. The instance has no
    // sequence data before and has some afterwards.
    void open(std::string_view flatBlock);
    // Flattens, ends the instance's sequence data, and gives the flat block. Fails if more handles
    // are live then than after the first time, which fills the module's own tables.
    std::string close();

    hostkit::Host host;
    hostkit::Plugin plugin;
    hostkit::Layer& layer;
    hostkit::Effect& effect;

private:
    std::size_t handles_ = 0; // live while the instance has no sequence data; 0: not counted yet
};

// The path that a flat block holds, read by the layout of both versions; empty where there is none.
std::string pathOfBlock(std::string_view block);

} // namespace fuzz
