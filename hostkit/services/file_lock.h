// A file lock that excludes other processes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace hostkit {

// Waits until no other process holds the lock on `file`, and holds it until destruction. The lock
// itself is a separate file with ".lock" appended to the name. Throws std::runtime_error.
class FileLock {
public:
    explicit FileLock(std::filesystem::path file);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    std::intptr_t lock_; // file descriptor or HANDLE
};

// The id of this process, for unique file names.
std::string processName();

} // namespace hostkit
