// Message boxes, confirmations and file dialogs, each a short script that the host runs.
//
// All texts are zero-terminated UTF-8. A script that fails, or a suite that cannot be acquired,
// counts as a cancelled dialog.
#pragma once

#include "sdk/aegp_types.h"
#include "support/text.h"

// Runs a script and returns the host's code, also if the suite cannot be acquired. result and error
// may be null; the caller frees the handles that they receive, which may be null.
PF_Err runScript(SPBasicSuite* basic, const char* script, bool isPlatformEncoding,
                 AEGP_MemHandle* result, AEGP_MemHandle* error);

// The text escaped for a string literal of a script. Bell characters are removed.
NarrowString scriptEscape(const char* text);

void alertBox(SPBasicSuite* basic, const char* message, const char* title, bool isError);

// Whether the user chose yes.
bool confirmBox(SPBasicSuite* basic, const char* title, const char* message, bool isNoDefault);

// Whether the user chose something. The path is the script's result, empty after a cancel. The
// filter is put into the script without escaping.
bool openFileDialog(SPBasicSuite* basic, const char* prompt, const char* filter,
                    NarrowString& path);
bool selectFolderDialog(SPBasicSuite* basic, const char* prompt, NarrowString& path);
