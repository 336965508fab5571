// Findings about a graph: its XML, its parameters, and how its nodes are connected.
#pragma once

#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/diagnostics/mapped_file.h"

namespace pbhost {

void lintGraph(const MappedFile& file, DiagnosticList& list);

} // namespace pbhost
