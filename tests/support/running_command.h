// A test inside a running command of the substitute host: what models, texts and graphs need to
// live.
//
// The command ends after the test's body, its locals and the members of a derived fixture are gone.
// Then every host handle that the test took must be given back, every suite too, and the host must
// have seen no misuse; otherwise the test fails.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

#include "command/command_scope.h"
#include "hostkit/host.h"
#include "hostkit/services/memory.h"

class RunningCommand : public testing::Test {
protected:
    RunningCommand();
    ~RunningCommand() override;

    // Runs the work again and again, and lets another one of its allocations fail each time. Every
    // failure must end it with the `long` 4 and leave nothing behind. The number of allocations.
    template<class Work>
    std::uint64_t failEveryAllocation(Work work);

    hostkit::Host host;
    static constexpr A_long pluginId = 7; // under which the command speaks to the host

private:
    std::size_t handlesBefore_;
    std::optional<CommandScope> scope_;
};

template<class Work>
std::uint64_t RunningCommand::failEveryAllocation(Work work) {
    const std::size_t before = hostkit::memory::liveHandles();
    for (std::uint64_t allocations = 0;; ++allocations) {
        bool isDone = false;
        hostkit::memory::setHandlesLeft(allocations);
        try {
            work();
            isDone = true;
        } catch (long error) {
            EXPECT_EQ(error, PF_Err_OUT_OF_MEMORY);
        }
        hostkit::memory::setHandlesLeft(hostkit::memory::noLimit);
        EXPECT_EQ(hostkit::memory::liveHandles(), before) << "after " << allocations;
        if (isDone || HasFailure())
            return allocations;
    }
}
