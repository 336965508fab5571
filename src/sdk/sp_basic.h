// The host's basic suite: the one table through which all other suites are lent.
//
// A suite is lent under an exact name and version and must be given back under the same pair. The
// host counts what it lends.
#pragma once

#include <cstdint>

using SPErr = std::int32_t; // 0 is success

struct SPBasicSuite {
    SPErr (*AcquireSuite)(const char* name, std::int32_t version, const void** suite);
    SPErr (*ReleaseSuite)(const char* name, std::int32_t version);
};
