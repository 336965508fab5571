#include "tests/support/temporary_folder.h"

#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

fs::path pathOf(const std::string& utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

std::string textOf(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

namespace {

std::string newFolder() {
    std::random_device random;
    for (;;) {
        const fs::path path = fs::temp_directory_path() / ("tvm_test_" + std::to_string(random()));
        if (fs::create_directory(path))
            return textOf(path);
    }
}

} // namespace

TemporaryFolder::TemporaryFolder() : path(newFolder()) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(pathOf(path), error);
    EXPECT_FALSE(error) << path << ": " << error.message();
}
