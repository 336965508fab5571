#include "tests/support/running_command.h"

#include "hostkit/calls/ledger.h"

RunningCommand::RunningCommand() : handlesBefore_(hostkit::memory::liveHandles()) {
    host.registeredPlugins.assign(pluginId, "test");
    scope_.emplace(PF_Cmd_SMART_RENDER, pluginId, host.inData());
}

RunningCommand::~RunningCommand() {
    hostkit::memory::setHandlesLeft(hostkit::memory::noLimit);
    scope_.reset();
    EXPECT_EQ(hostkit::memory::liveHandles(), handlesBefore_) << "host handles were not released";
    EXPECT_EQ(hostkit::ledger::outstanding(), std::vector<std::string>());
    EXPECT_EQ(hostkit::ledger::takeFaults(), std::vector<std::string>());
}
