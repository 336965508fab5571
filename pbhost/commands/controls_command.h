// The command `controls`: lists the effect's controls for a kernel or graph.
#pragma once

#include <string>

#include "pbhost/session/session.h"

namespace pbhost {

struct ControlsRequest {
    std::string file;
    bool asJson = false;
    bool all = false;      // including hidden controls
    bool isStrict = false; // fail on warnings about the graph
};

// The effect's title and its controls, as a table or as one JSON object. Throws Failure.
std::string showControls(Session& session, const ControlsRequest& request);

} // namespace pbhost
