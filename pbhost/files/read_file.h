// Reads a whole text file: all of it, or a reason why not.
#pragma once

#include <string>

#include "pbhost/process/failure.h"

namespace pbhost {

// Throws Failure of that code with the file's name and the reason: no file, a folder, no
// permission, a read that fails or ends before the file's size.
std::string readWholeFile(const std::string& path, ExitCode code);

} // namespace pbhost
