// An empty folder of the system's place for such, removed with all that is in it.
#pragma once

#include <filesystem>
#include <string>

// A path and its UTF-8 text, on every platform: the plain conversions go by the locale.
std::filesystem::path pathOf(const std::string& utf8);
std::string textOf(const std::filesystem::path& path);

// All bytes of a file; none if it cannot be read.
std::string bytesOf(const std::filesystem::path& path);

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string path; // UTF-8
};
