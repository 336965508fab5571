// Sets a locale with a decimal comma for the lifetime of the object.
//
// Windows always has one; elsewhere it is built by localedef. The test fails if the C library's
// functions do not use the comma.
#pragma once

#include "tests/support/temporary_folder.h"

class CommaLocale {
public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
#ifndef _WIN32
    const TemporaryFolder folder_;
#endif
};
