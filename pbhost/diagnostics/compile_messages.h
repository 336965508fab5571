// Turns the driver's log of a failed program into readable messages: each with the source line that
// it refers to, and without the duplicates that come from text shared by both stages.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "pbhost/commands/translate_command.h"

namespace pbhost {

// One entry of the engine's error log.
struct CompileFailure {
    std::string name; // name of the kernel, or node id in a graph
    char stage;       // 'v' or 'f'; 'l' for linking
    std::string log;  // the driver's
};

// Parses an exported error log; the description of the system at its start is skipped.
std::vector<CompileFailure> readErrorLog(std::string_view log);

// Returns the shaders of the program with that name, if there are any.
using FindTexts = std::function<std::optional<ProgramTexts>(const std::string& name)>;

std::string describe(const std::vector<CompileFailure>& failures, const FindTexts& findTexts);

} // namespace pbhost
