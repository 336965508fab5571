// Formatted messages for the host's Info panel.
#pragma once

#include "sdk/pf_types.h"

// Shows the expanded text, cut at 1023 bytes, in up to three lines; the third contains the rest,
// including line feeds. Returns the result of infoPanel3. Allocates nothing.
[[gnu::format(printf, 2, 3)]] PF_Err dprintf(SPBasicSuite* basic, const char* format, ...);
