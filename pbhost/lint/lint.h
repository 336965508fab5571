// Warnings about what the readers forgive. The readers report nothing; this pass reads the same
// file again and finds what has no effect, or another one than was probably meant.
#pragma once

#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/diagnostics/mapped_file.h"

namespace pbhost {

// Adds the findings about a file. Errors are faults with which it cannot be compiled or run.
void lintFile(const MappedFile& file, DiagnosticList& list);

} // namespace pbhost
