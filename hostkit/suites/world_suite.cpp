// Suite for the pixel format of a command's worlds.
#include <algorithm>

#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/command_stack.h"
#include "hostkit/effect/effect.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

bool isAcquired(const ActiveCommand& command, const void* pixels) {
    const auto isIt = [pixels](const CheckedOutWorld& world) {
        return world.record.data == pixels;
    };
    const bool isParameter =
        std::ranges::any_of(command.parameters, [&](const ParameterCheckout& checkout) {
            return checkout.pixels != nullptr && isIt(*checkout.pixels);
        });
    if (isParameter || command.number != PF_Cmd_SMART_RENDER || command.effect().frame() == nullptr)
        return isParameter;
    const Frame& frame = *command.effect().frame();
    return isIt(frame.output) || std::ranges::any_of(frame.checkedOut, [&](const auto& entry) {
               return isIt(*entry.second);
           });
}

PF_PixelFormat formatOf(int componentBytes) {
    switch (componentBytes) {
    case 1:
        return PF_PixelFormat_ARGB32;
    case 2:
        return PF_PixelFormat_ARGB64;
    default:
        return PF_PixelFormat_ARGB128;
    }
}

PF_Err getPixelFormat(const PF_EffectWorld* world, PF_PixelFormat* format) {
    constexpr const char* call = "PF_GetPixelFormat";
    return contractCall<PF_WorldSuite2>(call, [&] {
        if (world == nullptr || format == nullptr || world->data == nullptr)
            return misuse(call, "the world, its pixels or the format pointer is null");
        const ActiveCommand* command = ActiveCommand::newest();
        if (command == nullptr || !isAcquired(*command, world->data))
            return misuse(call, "the world does not belong to the running command");
        *format = formatOf(command->effect().componentBytes());
        return PF_Err_NONE;
    });
}

} // namespace

const PF_WorldSuite2& worldSuite() {
    static constexpr PF_WorldSuite2 table = {getPixelFormat};
    return table;
}

} // namespace hostkit::tables
