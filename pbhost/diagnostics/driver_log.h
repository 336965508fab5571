// Parses the log of a shader or program, in the forms of the drivers in use.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "pbhost/diagnostics/diagnostic.h"

namespace pbhost {

struct DriverMessage {
    Severity severity = Severity::Error;
    std::size_t line = 0;   // of the shader, from 1; 0: the message names none
    std::size_t column = 0; // of the preprocessed line, from 1; 0: the driver gives none
    std::string text;       // without the place and the grade
    std::vector<std::string> candidates; // functions that the driver lists for a call
};

// The messages in the log's order, without those that only follow from the one before: an
// operation with an operand that is not declared.
std::vector<DriverMessage> parseDriverLog(std::string_view log);

// The name that a message is about, which is its first quoted word; empty: none.
std::string_view namedIn(std::string_view message);

} // namespace pbhost
