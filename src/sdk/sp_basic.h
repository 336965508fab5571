// The host's basic suite, through which all other suites are acquired and released.
//
// A suite is acquired under an exact name and version and must be released under the same pair. The
// host counts both.
#pragma once

#include <cstdint>

using SPErr = std::int32_t; // 0 is success

struct SPBasicSuite {
    SPErr (*AcquireSuite)(const char* name, std::int32_t version, const void** suite);
    SPErr (*ReleaseSuite)(const char* name, std::int32_t version);
};
