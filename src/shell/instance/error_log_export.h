// Export of the error log to a file.
#pragma once

#include "sdk/pf_types.h"

// If there is a log, asks the user whether and where to write it. A successful export clears the
// log.
void offerErrorLog(const PF_InData& inData);
