// Shared libraries of the machine's system: the file of a module becomes code.
#pragma once

#include <filesystem>
#include <string>

namespace hostkit::library {

// A library that stays in the process to its end. Throws std::runtime_error, with the file's name
// and the reason.
void* load(const std::filesystem::path& path);

// The same library if it is already in the process, otherwise null.
void* loaded(const std::filesystem::path& path);

// Null when the library has no function of that name.
void* functionIn(void* library, const std::string& name);

} // namespace hostkit::library
