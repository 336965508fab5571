// The commands `info`, which presses the effect's options button, and `about`, which opens its
// about box.
#pragma once

#include <string>

#include "pbhost/session/load_check.h"
#include "pbhost/session/session.h"

namespace pbhost {

struct InfoRequest {
    std::string file;
    std::string exportFolder; // for the error log; empty: the user is asked
    FindingOptions findings;  // about the kernel or graph
};

// Stores the effect's information about its kernel or graph in `text`, which is valid even when
// Failure is thrown: RenderFailed if the log could not be written; BadKernel if the kernel does not
// compile and no folder for the log is given, or if the graph has wiring errors.
void info(Session& session, const InfoRequest& request, std::string& text);

// The effect's information about OpenGL.
std::string about(Session& session);

} // namespace pbhost
