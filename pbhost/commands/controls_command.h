// The command `controls`: lists the effect's controls for a kernel or graph.
#pragma once

#include <string>

#include "pbhost/session/load_check.h"
#include "pbhost/session/session.h"

namespace pbhost {

struct ControlsRequest {
    std::string file;
    bool asJson = false;
    bool all = false;        // including hidden controls
    FindingOptions findings; // about the kernel or graph
};

// Stores the effect's title and its controls in `text`, as a table or as one JSON object. The text
// is valid even when Failure is thrown because the kernel does not compile.
void showControls(Session& session, const ControlsRequest& request, std::string& text);

} // namespace pbhost
