// Search for the effect module, the picture library and the preferences file.
#pragma once

#include <filesystem>
#include <string>

namespace pbhost {

// The option's file if not empty, else that of the environment variable TVELMARONDINE_MODULE, else
// Tvelmarondine.so beside the program, one folder above, or in ../lib/tvelmarondine. Throws Failure
// (Usage) if there is none.
std::filesystem::path findModule(const std::string& option);

// The picture library beside the program. Throws Failure (RenderFailed) if it is missing.
std::filesystem::path findPictureLibrary();

// The option's file if not empty, else the user's file, which may not exist yet; empty if HOME is
// not set. Throws Failure (Usage) for a folder.
std::filesystem::path preferencesFile(const std::string& option);

} // namespace pbhost
