// Files that appear only when they are complete: written under another name, then moved to their
// place in one step.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace hostkit {

// Writes the text over a file.
std::error_code writeWhole(const std::filesystem::path& file, const std::string& text);

// A file that was in the place gives its permissions to this one.
std::error_code moveToPlace(const std::filesystem::path& file, const std::filesystem::path& place);

} // namespace hostkit
