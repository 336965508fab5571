// Runs other programs.
#pragma once

#include <string>
#include <vector>

namespace pbhost {

struct ProgramResult {
    int code = 0; // 128 plus the number of a signal that ended it
    std::string out, err;
};

// Runs a program, found as a shell does, without standard input, until it ends. Throws Failure
// (RenderFailed) if it cannot be started; `purpose` completes "NAME is needed ...".
ProgramResult runProgram(const std::vector<std::string>& arguments, const std::string& purpose);

// The text as one word of a POSIX shell.
std::string shellQuoted(const std::string& text);

} // namespace pbhost
