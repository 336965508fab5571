// Turns the driver's log of a failed program into findings about the kernel or graph file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/diagnostics/mapped_file.h"

namespace pbhost {

// The log of one step of making a program.
struct CompileFailure {
    std::string name; // name of the kernel, or node id in a graph
    char stage;       // 'v' or 'f'; 'l' for linking
    std::string log;  // the driver's
};

// Parses an exported error log; the description of the system at its start is skipped.
std::vector<CompileFailure> readErrorLog(std::string_view log);

// Adds the messages of a log to the list: each at its place in the file, in the words of the kernel
// language. A message about text that is not from the file says so and has no line. Warnings are
// added only with `hasWarnings`. Call sortDiagnostics on the list at the end, because both stages
// report the errors of the text that they share.
void addDriverMessages(DiagnosticList& list, const MappedProgram& program,
                       const CompileFailure& failure, bool hasWarnings);

} // namespace pbhost
