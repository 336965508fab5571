// The handlers of the engine's report channels: the trace is dropped, information goes to the
// host's Info panel, errors to the error log.
#pragma once

#include <cstdint>

// Installs the three handlers. Outside a command they do nothing; the one for the error log also
// does nothing before there is a GlobalData.
void installReportHandlers();

// The number of messages on the Info panel so far. After a failure it shows whether the engine has
// reported a reason.
std::uint64_t infoMessageCount();
