#include "tests/support/running_command.h"

#include "hostkit/ledger.h"

RunningCommand::RunningCommand() : handlesBefore_(hostkit::memory::liveHandles()) {
    scope_.emplace(PF_Cmd_SMART_RENDER, 0, host.inData());
}

RunningCommand::~RunningCommand() {
    hostkit::memory::setHandlesLeft(hostkit::memory::noLimit);
    scope_.reset();
    EXPECT_EQ(hostkit::memory::liveHandles(), handlesBefore_) << "host handles were left alive";
    EXPECT_EQ(hostkit::ledger::outstanding(), std::vector<std::string>());
    EXPECT_EQ(hostkit::ledger::takeFaults(), std::vector<std::string>());
}
