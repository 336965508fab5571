// A locale in which numbers have a decimal comma, for as long as the object lives.
//
// It is built on the spot, since a machine need not have one installed. The test fails when the C
// library's own functions do not see the comma.
#pragma once

#include <filesystem>

class CommaLocale {
public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    std::filesystem::path folder_;
};
