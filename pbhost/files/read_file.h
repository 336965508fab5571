// Reads a whole text file.
#pragma once

#include <string>

#include "pbhost/process/failure.h"

namespace pbhost {

// Throws Failure with that code, the file's name and the reason: no file, a folder, no permission,
// a read that fails or ends before the file's size.
std::string readWholeFile(const std::string& path, ExitCode code);

} // namespace pbhost
