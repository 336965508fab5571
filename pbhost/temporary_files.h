// Files that are not complete yet. Their names tell the process that makes them, so that whoever
// outlives that process can remove what it left.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace pbhost {

// The folder that a path lies in; of a bare name the current one.
std::filesystem::path folderOf(const std::filesystem::path& path);

// A name beside the target, with its ending. The file is removed again unless it has been moved to
// its place.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::filesystem::path path;
};

// Puts the text into the place of the target in one step. Throws Failure (RenderFailed).
void writeTextFile(const std::filesystem::path& target, const std::string& text);

// An empty folder of the system's place for such, removed with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder(); // throws Failure (RenderFailed)
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path;
};

// Removes what that process left in these folders and in the system's place for temporary files.
void removeTemporaries(const std::vector<std::filesystem::path>& folders, pid_t process);

} // namespace pbhost
