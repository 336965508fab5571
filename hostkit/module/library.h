// Loading of shared libraries.
#pragma once

#include <filesystem>
#include <string>

namespace hostkit::library {

// Loads a library that stays loaded until the process ends. Throws std::runtime_error with the
// file's name and the reason.
void* load(const std::filesystem::path& path);

// The library if it is already loaded, otherwise null.
void* loaded(const std::filesystem::path& path);

// Null if the library exports no function of that name.
void* functionIn(void* library, const std::string& name);

} // namespace hostkit::library
