// The command `live`: shows the effect's controls and its picture in a browser.
#pragma once

#include <CLI/CLI.hpp>

#include "pbhost/live/server/workspace.h"
#include "pbhost/session/session.h"

namespace pbhost {

// Adds the options to the command; the request is filled when the command line is parsed, and must
// outlive the command.
void addLiveOptions(CLI::App& command, live::LiveRequest& request);

// Prints the page's address and serves it until the process ends. Throws Failure.
void serveLive(const live::LiveRequest& request, const SessionOptions& options);

} // namespace pbhost
