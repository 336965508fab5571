// The verbs in which the effect speaks of itself: `info` presses its options button, `about` opens
// its about box.
#pragma once

#include <string>

#include "pbhost/session.h"

namespace pbhost {

struct InfoRequest {
    std::string file;
    std::string exportFolder; // for the error log; empty: the questions go to the person
};

// What the effect tells of its kernel or graph. Throws Failure: RenderFailed when the log could not
// be written.
std::string info(Session& session, const InfoRequest& request);

// What it tells of OpenGL.
std::string about(Session& session);

} // namespace pbhost
