// Where the program finds the effect module, the picture formats and the preferences.
#pragma once

#include <filesystem>
#include <string>

namespace pbhost {

// The option's file if it is not empty, else that of the environment's TVELMARONDINE_MODULE, else
// Tvelmarondine.so beside the program or one folder above. Throws Failure (Usage) when there is
// none.
std::filesystem::path findModule(const std::string& option);

// The library of the picture formats, beside the program. Throws Failure (RenderFailed) when it is
// missing.
std::filesystem::path findPictureLibrary();

// The option's file if it is not empty, else the user's own, which need not be there; empty without
// a home folder. Throws Failure (Usage) for a folder.
std::filesystem::path preferencesFile(const std::string& option);

} // namespace pbhost
