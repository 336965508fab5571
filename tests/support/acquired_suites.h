// Every suite of the substitute host, acquired for as long as this stands: for tests that call the
// tables of the suites themselves.
#pragma once

#include "hostkit/suites/basic_suite.h"

class AcquiredSuites {
public:
    AcquiredSuites() {
        const void* table = nullptr;
        for (const auto& [name, version] : all_)
            hostkit::suites::basicSuite().AcquireSuite(name.c_str(), version, &table);
    }
    ~AcquiredSuites() {
        for (const auto& [name, version] : all_)
            hostkit::suites::basicSuite().ReleaseSuite(name.c_str(), version);
    }
    AcquiredSuites(const AcquiredSuites&) = delete;
    AcquiredSuites& operator=(const AcquiredSuites&) = delete;

private:
    const std::vector<std::pair<std::string, std::int32_t>> all_ = hostkit::suites::offered();
};
