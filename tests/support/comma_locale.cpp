#include "tests/support/comma_locale.h"

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

CommaLocale::CommaLocale()
    : folder_(std::filesystem::temp_directory_path() /
              ("comma_locale_" + std::to_string(getpid()))) {
    std::filesystem::create_directory(folder_);
    std::ofstream(folder_ / "source") << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                         "grouping 3;3\nEND LC_NUMERIC\n";
    // Only one of the categories is there; that makes localedef complain, and its result useless.
    const std::string command = "localedef --force --quiet -i '" + (folder_ / "source").string() +
                                "' '" + (folder_ / "comma").string() + "'";
    [[maybe_unused]] const int result = std::system(command.c_str());
    setenv("LOCPATH", folder_.c_str(), 1);
    EXPECT_NE(std::setlocale(LC_NUMERIC, "comma"), nullptr) << "no locale from: " << command;
    EXPECT_EQ(std::strtod("1,5", nullptr), 1.5);
}

CommaLocale::~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    std::filesystem::remove_all(folder_);
}
