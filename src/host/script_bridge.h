// Message boxes, questions and choosers: short scripts that the host is asked to run.
//
// All texts are zero-terminated UTF-8. A script that fails, or a suite that can't be had, is the
// same to the user as a cancelled dialog.
#pragma once

#include "sdk/aegp_types.h"
#include "support/text.h"

// Runs a script: the host's code, also when the suite can't be had. result and error may be null;
// what comes in them is the caller's to free, null where there is nothing.
PF_Err runScript(SPBasicSuite* basic, const char* script, bool isPlatformEncoding,
                 AEGP_MemHandle* result, AEGP_MemHandle* error);

// The text as it must stand inside a string literal of a script. Bell characters vanish.
NarrowString scriptEscape(const char* text);

void alertBox(SPBasicSuite* basic, const char* message, const char* title, bool isError);

// Whether the user chose yes.
bool confirmBox(SPBasicSuite* basic, const char* title, const char* message, bool isNoDefault);

// Whether something was chosen. The path takes what the script gave, empty after a cancel. The
// filter goes into the script as it stands.
bool openFileDialog(SPBasicSuite* basic, const char* prompt, const char* filter,
                    NarrowString& path);
bool selectFolderDialog(SPBasicSuite* basic, const char* prompt, NarrowString& path);
