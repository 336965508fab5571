// An empty folder among the system's temporary files; the destructor removes it with its content.
#pragma once

#include <filesystem>
#include <string>

// Conversion between a path and UTF-8 text on every platform; std::filesystem's own narrow
// conversion depends on the locale.
std::filesystem::path pathOf(const std::string& utf8);
std::string textOf(const std::filesystem::path& path);

// All bytes of a file; empty if it cannot be read.
std::string bytesOf(const std::filesystem::path& path);

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string path; // UTF-8
};
