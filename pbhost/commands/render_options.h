// The options of the command `render`, which `submit` takes, too.
#pragma once

#include <CLI/CLI.hpp>

#include "pbhost/render/render_request.h"

namespace pbhost {

// Adds the options to the command; the request is filled when the command line is parsed, and must
// outlive the command.
void addRenderOptions(CLI::App& command, RenderRequest& request);

} // namespace pbhost
