// An empty folder of the system's place for such, removed with all that is in it.
#pragma once

#include <string>

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string path; // UTF-8
};
