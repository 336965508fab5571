// Files that are not complete yet. Their names tell the process that makes them, so that whoever
// outlives that process can remove what it left.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace pbhost {

// The folder that a path lies in; of a bare name the current one.
std::filesystem::path folderOf(const std::filesystem::path& path);

// Where a file of that name lies: a symbolic link leads there.
std::filesystem::path placeOf(const std::filesystem::path& path);

// Why no file can be written there; empty: nothing speaks against it. Only a regular file is ever
// replaced, not a device, a pipe or what a process has open. To be sure, a file is made beside it
// and removed again.
std::string obstacleAt(const std::filesystem::path& target);

// A name beside the place of the target, with the target's ending. The file is removed again unless
// it has been moved to its place.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // Makes the file, empty; fails where there is one of that name.
    std::error_code create() const;
    // A file that was there gives its permissions to this one.
    std::error_code moveToPlace() const;

    std::filesystem::path path;

private:
    std::filesystem::path place_;
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
