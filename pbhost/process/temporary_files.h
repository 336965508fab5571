// Incomplete output files. Their names contain the id of the process that created them, so that its
// parent can remove them after a crash.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace pbhost {

// The folder of a path; "." for a bare file name.
std::filesystem::path folderOf(const std::filesystem::path& path);

// The path itself, or the target of a symbolic link.
std::filesystem::path resolveLink(const std::filesystem::path& path);

// Why the target cannot be written; empty if it can. Only a regular file is ever replaced, not a
// device, a pipe, or the open file of a process. Creates and removes a file in the folder to check
// it.
std::string obstacleToWriting(const std::filesystem::path& target);

// A temporary file in the target's folder, with the target's extension. The destructor removes the
// file unless it has replaced the target.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // Creates the empty file; fails if one with its name exists.
    std::error_code create() const;
    // Atomically replaces the target, keeping an existing target's permissions.
    std::error_code replaceTarget() const;

    std::filesystem::path path;

private:
    std::filesystem::path target_;
};

// Atomically writes the text to the target. Throws Failure (RenderFailed).
void writeTextFile(const std::filesystem::path& target, const std::string& text);

// An empty folder among the system's temporary files; the destructor removes it with its content.
class TemporaryFolder {
public:
    TemporaryFolder(); // throws Failure (RenderFailed)
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path;
};

// Removes the temporary files in the folder that were not written for a day: what processes that
// were killed have left, on this machine or another.
void removeAbandonedTemporaries(const std::filesystem::path& folder);

// Removes the process's temporary files from these folders and from the system's temporary folder.
void removeTemporaries(const std::vector<std::filesystem::path>& folders, pid_t process);

} // namespace pbhost
