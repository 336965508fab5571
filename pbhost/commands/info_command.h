// The commands in which the effect speaks of itself: `info` presses its options button, `about`
// opens its about box.
#pragma once

#include <string>

#include "pbhost/session/session.h"

namespace pbhost {

struct InfoRequest {
    std::string file;
    std::string exportFolder; // for the error log; empty: the questions go to the person
    bool isStrict = false;    // about a graph's wiring
};

// Puts what the effect tells of its kernel or graph into `text`, which holds even when this throws
// Failure: RenderFailed when the log could not be written; without a folder for the log BadKernel
// for what does not compile; BadKernel for a graph that is wired wrongly.
void info(Session& session, const InfoRequest& request, std::string& text);

// What it tells of OpenGL.
std::string about(Session& session);

} // namespace pbhost
