#include "tests/support/temporary_folder.h"

#include <filesystem>
#include <random>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string newFolder() {
    std::random_device random;
    for (;;) {
        const fs::path path = fs::temp_directory_path() / ("tvm_test_" + std::to_string(random()));
        if (fs::create_directory(path))
            return path.string();
    }
}

} // namespace

TemporaryFolder::TemporaryFolder() : path(newFolder()) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(path, error);
    EXPECT_FALSE(error) << path << ": " << error.message();
}
