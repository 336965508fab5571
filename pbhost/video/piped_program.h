// Another program with a pipe to its standard input or from its standard output.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace pbhost {

class PipedProgram {
public:
    enum class Direction { ToProgram, FromProgram };
    // Starts it. Throws Failure (RenderFailed) if that is not possible.
    PipedProgram(const std::vector<std::string>& arguments, Direction direction);
    // Ends the program if `finish` was not called.
    ~PipedProgram();
    PipedProgram(const PipedProgram&) = delete;
    PipedProgram& operator=(const PipedProgram&) = delete;

    // Reads until the buffer is full; false at the end of the output.
    bool read(std::byte* bytes, std::size_t count);
    // False if the program no longer reads.
    bool write(const std::byte* bytes, std::size_t count);
    // Closes the pipe and waits for the end. Returns whether the program succeeded.
    bool finish();
    // What it wrote to standard error.
    std::string errors();

private:
    void closePipe();

    int pipe_ = -1;
    pid_t child_ = 0;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> errors_;
};

} // namespace pbhost
