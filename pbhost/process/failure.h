// The one way in which errors go up, and the one place that turns them into a message and an exit
// code.
#pragma once

#include <functional>
#include <new>
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

// The work's answer. What a library throws becomes a Failure of that code; the prefix goes in front
// of its message.
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

// The exit code of the work, which is its answer or that of the exception that ends it; its message
// goes to standard error.
int exitCodeOf(const std::function<int()>& work);

} // namespace pbhost
