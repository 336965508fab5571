// Where the engine's messages end: nowhere, on the host's Info panel, in the error log.
#pragma once

#include <cstdint>

// Installs the three handlers. Outside a command, and before there is a GlobalData, they do
// nothing.
void installReportHandlers();

// How many messages went to the Info panel so far: whoever must say why something failed can tell
// whether the engine has said it.
std::uint64_t infoMessageCount();
