// A locale in which numbers have a decimal comma, for as long as the object lives.
//
// Windows has one; elsewhere it is built on the spot, since a machine need not have one installed.
// The test fails when the C library's own functions do not see the comma.
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
