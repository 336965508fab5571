// One process at a time: a lock that lies in a file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace hostkit {

// Waits until no other process holds the lock of that file, and keeps it until its end. The lock is
// a file of its own, with the ending ".lock" behind the name. Throws std::runtime_error.
class FileLock {
public:
    explicit FileLock(std::filesystem::path file);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    std::intptr_t lock_; // as the system numbers its open files
};

// This process' number, for the names of files that are its own.
std::string processName();

} // namespace hostkit
