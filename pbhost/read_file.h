// Reads a whole text file: all of it, or a reason why not.
#pragma once

#include <string>

namespace pbhost {

// Throws std::runtime_error with the reason, without the file's name: no file, a folder, no
// permission, a read that fails or ends before the file's size.
std::string readWholeFile(const std::string& path);

} // namespace pbhost
