// The exception type of all errors, and the function that turns it into a message and an exit code.
#pragma once

#include <functional>
#include <new>
#include <stdexcept>
#include <string>

namespace pbhost {

// If a signal ends the program, its exit code is 128 plus the signal's number: 130 for Ctrl-C.
enum class ExitCode {
    Done = 0,
    RenderFailed = 1, // rendering or writing a file failed
    Usage = 2,        // invalid command line, project file or preferences
    BadKernel = 3,    // invalid kernel or graph file
    BadPicture = 4,   // invalid input picture
    Crashed = 5,      // the child process crashed
};

class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& message)
        : std::runtime_error(message), code(exitCode) {}

    ExitCode code;
};

// Returns the result of `work`. Converts exceptions of libraries to a Failure with this code and
// prefix.
template<class Work>
auto orFail(ExitCode code, const std::string& prefix, const Work& work) {
    try {
        return work();
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(code, prefix + error.what());
    }
}

// Runs `work` and returns its result, or the exit code of the exception that ended it. The
// exception's message goes to standard error.
int exitCodeOf(const std::function<int()>& work);

} // namespace pbhost
