// The command `live`: shows the effect's controls and its picture in a browser.
#pragma once

#include <string>

#include "pbhost/live/server/workspace.h"
#include "pbhost/session/session.h"

namespace pbhost {

// Prints the page's address and serves it until the process ends. Throws Failure.
void serveLive(const live::LiveRequest& request, const SessionOptions& options);

} // namespace pbhost
