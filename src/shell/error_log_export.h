// The offer to write the error log to a file.
#pragma once

#include "sdk/pf_types.h"

// Asks the user if there is a log, and where it shall go; a good export clears it.
void offerErrorLog(const PF_InData& inData);
