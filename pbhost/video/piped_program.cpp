#include "pbhost/video/piped_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "pbhost/process/channel.h"
#include "pbhost/process/failure.h"

extern char** environ;

namespace pbhost {

PipedProgram::PipedProgram(const std::vector<std::string>& arguments, Direction direction)
    : errors_(std::tmpfile(), std::fclose) {
    std::signal(SIGPIPE, SIG_IGN); // a program that ends early is reported by write()
    std::array<int, 2> ends{};
    if (errors_ == nullptr || ::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw Failure(ExitCode::RenderFailed, std::string("no pipe: ") + std::strerror(errno));
    const bool isWritten = direction == Direction::ToProgram;
    pipe_ = ends[isWritten ? 1 : 0];
    const int other = ends[isWritten ? 0 : 1];
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, isWritten ? STDOUT_FILENO : STDIN_FILENO,
                                       "/dev/null", O_RDWR, 0);
    ::posix_spawn_file_actions_adddup2(&actions, other, isWritten ? STDIN_FILENO : STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, ::fileno(errors_.get()), STDERR_FILENO);
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const int error = ::posix_spawnp(&child_, words[0], &actions, nullptr, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(other);
    if (error == 0)
        return;
    child_ = 0;
    closePipe();
    throw Failure(ExitCode::RenderFailed,
                  "the program " + arguments[0] + " is needed for videos: " + std::strerror(error));
}

PipedProgram::~PipedProgram() {
    if (child_ != 0)
        ::kill(child_, SIGKILL);
    finish();
}

void PipedProgram::closePipe() {
    if (pipe_ >= 0)
        ::close(pipe_);
    pipe_ = -1;
}

bool PipedProgram::read(std::byte* bytes, std::size_t count) {
    return readAll(pipe_, bytes, count);
}

bool PipedProgram::write(const std::byte* bytes, std::size_t count) {
    return writeAll(pipe_, bytes, count);
}

bool PipedProgram::finish() {
    closePipe();
    if (child_ == 0)
        return true;
    int status = 0;
    while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    child_ = 0;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string PipedProgram::errors() {
    std::rewind(errors_.get());
    std::string text(4096, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), errors_.get()));
    return text;
}

} // namespace pbhost
