// Runs the program pbhost as a user does, in a folder of its own. Only for tests that are compiled
// with its path.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "tests/support/temporary_folder.h"

inline void write(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
}

// Whether the current folder has an incomplete output.
inline bool hasTemporaries() {
    for (const auto& entry : std::filesystem::directory_iterator("."))
        if (entry.path().filename().string().starts_with(".pbhost-"))
            return true;
    return false;
}

// What a run of the program left.
struct Result {
    int code = 0;
    std::string out, err;

    void expectSuccess() const { EXPECT_EQ(code, 0) << err; }
    // A failure is explained on standard error only, and the old picture is kept.
    void expectFailure(int wanted, const std::vector<std::string>& messages) const {
        EXPECT_EQ(code, wanted) << err;
        EXPECT_EQ(out, "");
        for (const std::string& message : messages)
            EXPECT_NE(err.find(message), std::string::npos) << message << "\nin: " << err;
        EXPECT_TRUE(bytesOf("old.png") == "old");
    }
};

// Each test uses its own folder, in which old.png is an old output, and its own preferences.
class ProgramTest : public testing::Test {
protected:
    ProgramTest() {
        std::filesystem::current_path(temporary_.path);
        setenv("XDG_CONFIG_HOME", temporary_.path.c_str(), 1);
        setenv("TVELMARONDINE_STRICT", "1", 1);
        write("old.png", "old");
    }
    ~ProgramTest() override { std::filesystem::current_path("/"); }

    // Arguments and environment are text for the shell.
    static Result run(const std::string& arguments, const std::string& environment = "",
                      const std::string& program = PBHOST_PATH) {
        const int status = std::system(
            (environment + " '" + program + "' " + arguments + " </dev/null >out.txt 2>err.txt")
                .c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, bytesOf("out.txt"),
                bytesOf("err.txt")};
    }

    const TemporaryFolder temporary_;
};
