// Fixture for tests inside a running command of the substitute host, which models, texts and graphs
// need for their memory.
//
// The command ends after the test's body and the members of a derived fixture. Then all handles and
// suites must be released and no fault recorded; otherwise the test fails.
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

    // Runs the work repeatedly and makes a different allocation fail each time. Each run must throw
    // the `long` 4 and leave no handle. Returns the number of allocations.
    template<class Work>
    std::uint64_t failEveryAllocation(Work work);

    hostkit::Host host;
    static constexpr A_long pluginId = 7; // id that the command passes to the host

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
