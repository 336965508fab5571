// Writing of files so that other processes never see an incomplete file: written under a temporary
// name, then renamed.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace hostkit {

// Writes the text to the file, replacing its content; not atomic.
std::error_code writeFile(const std::filesystem::path& file, const std::string& text);

// Renames `file` to `target`, replacing it. An existing target's permissions are kept.
std::error_code replaceFile(const std::filesystem::path& file, const std::filesystem::path& target);

} // namespace hostkit
