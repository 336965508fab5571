// How a verb ends when it cannot do what it was asked: with a message for standard error and the
// program's exit code.
#pragma once

#include <stdexcept>
#include <string>

namespace pbhost {

enum class ExitCode {
    Done = 0,
    RenderFailed = 1, // the render or the writing of the picture
    Usage = 2,
    BadKernel = 3,  // the kernel or graph file
    BadPicture = 4, // an input picture
};

class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& message)
        : std::runtime_error(message), code(exitCode) {}

    ExitCode code;
};

} // namespace pbhost
