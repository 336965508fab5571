// Finds the file of an instance whose project was made on another machine.
#pragma once

#include "sdk/pf_types.h"
#include "shell/instance/sequence_data.h"

// If the file of the instance does not exist, searches the root folder of the preferences for a
// file of the same name and sets its path. Needs a running command.
void findMovedFile(const PF_InData& inData, SequenceData& sequence);
