// Makes of the driver's log of a failed program something that a person can act on: each message
// with the line that it speaks of, and no message twice only because both stages hold the same
// text.
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
    std::string name; // the kernel's, or in a graph the node's id
    char stage;       // 'v' or 'f'; 'l' for linking
    std::string log;  // the driver's
};

// The entries of an exported log, without what it says of the machine.
std::vector<CompileFailure> readErrorLog(std::string_view log);

// Gives the texts of the program of that name, where there are any.
using FindTexts = std::function<std::optional<ProgramTexts>(const std::string& name)>;

std::string describe(const std::vector<CompileFailure>& failures, const FindTexts& findTexts);

} // namespace pbhost
