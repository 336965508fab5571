// Acquires every suite of the substitute host for the lifetime of the object, for tests that call
// suite functions directly.
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
