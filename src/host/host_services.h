// Small services of the host: undo groups, the lines of the Info panel, the options button.
//
// Each function acquires its suite for one call. All texts are zero-terminated UTF-8. Returns the
// host's code, also if the suite cannot be acquired.
#pragma once

#include "sdk/pf_types.h"

// All changes between the two calls are one step in the host's undo list; the name may be empty.
PF_Err startUndoGroup(SPBasicSuite* basic, const char* name);
PF_Err endUndoGroup(SPBasicSuite* basic);

// Shows lines in the Info panel. Line 2 of either and line 3 may be null.
PF_Err infoPanel2(SPBasicSuite* basic, const char* line1, const char* line2);
PF_Err infoPanel3(SPBasicSuite* basic, const char* line1, const char* line2, const char* line3);

// Only during parameter setup. Always returns 0: if it fails, the button only has no name.
PF_Err setOptionsButtonName(const PF_InData* inData, const char* name);
