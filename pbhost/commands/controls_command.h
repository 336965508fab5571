// The command `controls`: what the effect shows of a kernel or graph.
#pragma once

#include <string>

#include "pbhost/session/session.h"

namespace pbhost {

struct ControlsRequest {
    std::string file;
    bool asJson = false;
    bool all = false;      // hidden ones, too
    bool isStrict = false; // about a graph's wiring
};

// The title and the controls, as a table or as one JSON object. Throws Failure.
std::string showControls(Session& session, const ControlsRequest& request);

} // namespace pbhost
