#include "tests/support/comma_locale.h"

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#ifdef _WIN32

CommaLocale::CommaLocale() {
    EXPECT_NE(std::setlocale(LC_NUMERIC, "German"), nullptr);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}

CommaLocale::~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
}

#else

CommaLocale::CommaLocale() {
    const std::string& folder = folder_.path;
    std::ofstream(folder + "/source") << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                         "grouping 3;3\nEND LC_NUMERIC\n";
    // localedef warns about the missing categories and returns an error, so its result is not
    // checked.
    const std::string command =
        "localedef --force --quiet -i '" + folder + "/source' '" + folder + "/comma'";
    [[maybe_unused]] const int result = std::system(command.c_str());
    setenv("LOCPATH", folder.c_str(), 1);
    EXPECT_NE(std::setlocale(LC_NUMERIC, "comma"), nullptr) << "no locale from: " << command;
    EXPECT_EQ(std::strtod("1,5", nullptr), 1.5);
}

CommaLocale::~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
}

#endif
