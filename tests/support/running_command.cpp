#include "tests/support/running_command.h"

#include "hostkit/suites.h"

RunningCommand::RunningCommand() : handlesBefore_(hostkit::memory::liveHandles()) {
    scope_.emplace(PF_Cmd_SMART_RENDER, 0, host.inData());
}

RunningCommand::~RunningCommand() {
    hostkit::memory::setHandlesLeft(hostkit::memory::noLimit);
    scope_.reset();
    EXPECT_EQ(hostkit::memory::liveHandles(), handlesBefore_) << "host handles were left alive";
    for (const hostkit::suites::Loan& loan : hostkit::suites::loans())
        EXPECT_EQ(loan.lent, loan.returned) << loan.name << " " << loan.version;
    EXPECT_EQ(hostkit::memory::takeFaults(), std::vector<std::string>());
    EXPECT_EQ(hostkit::suites::takeFaults(), std::vector<std::string>());
}
