// Formatted messages for the host's Info panel.
#pragma once

#include "sdk/pf_types.h"

// Shows the expanded text, cut at 1023 bytes, in up to three lines; the third holds the whole rest,
// line feeds included. The result is that of infoPanel3. Allocates nothing.
[[gnu::format(printf, 2, 3)]] PF_Err dprintf(SPBasicSuite* basic, const char* format, ...);
