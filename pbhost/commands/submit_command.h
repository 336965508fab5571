// The command `submit`: renders a sequence on a farm.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace pbhost {

// Adds the command with its own commands. `parse` parses the arguments of a render; `setWork` takes
// the work of the command that was chosen.
void addSubmit(CLI::App& app, const std::function<void(CLI::App&)>& addSessionOptions,
               const std::function<void(std::function<std::string()>)>& setWork);

} // namespace pbhost
