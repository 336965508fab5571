// A running command on the substitute host: what models and graphs need to live.
#pragma once

#include "host/command_scope.h"
#include "hostkit/host.h"

namespace pbhost {

class Command {
public:
    Command() = default;

private:
    hostkit::Host host_;
    CommandScope scope_{0, 0, host_.inData()};
};

} // namespace pbhost
