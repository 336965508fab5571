// How a verb ends when it cannot do what it was asked: with a message for standard error and the
// program's exit code.
#pragma once

#include <stdexcept>
#include <string>

namespace pbhost {

// A program that a signal ended answers 128 and the signal's number besides: 130 for Ctrl-C.
enum class ExitCode {
    Done = 0,
    RenderFailed = 1, // the render or the writing of a file
    Usage = 2,        // the command line, the project file, the preferences
    BadKernel = 3,    // the kernel or graph file
    BadPicture = 4,   // an input picture
    Crashed = 5,      // the process that does the work
};

class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& message)
        : std::runtime_error(message), code(exitCode) {}

    ExitCode code;
};

} // namespace pbhost
