#include "pbhost/process/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "pbhost/process/channel.h"
#include "pbhost/process/failure.h"

extern char** environ;

namespace pbhost {

namespace {

struct Pipe {
    Pipe() {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw Failure(ExitCode::RenderFailed, std::string("no pipe: ") + std::strerror(errno));
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    void closeEnd(std::size_t end) {
        if (ends[end] >= 0)
            ::close(ends[end]);
        ends[end] = -1;
    }

    std::array<int, 2> ends{-1, -1};
};

void readBoth(Pipe& out, Pipe& err, ProgramResult& result) {
    while (out.ends[0] >= 0 || err.ends[0] >= 0) {
        std::array<pollfd, 2> both = {{{out.ends[0], POLLIN, 0}, {err.ends[0], POLLIN, 0}}};
        if (::poll(both.data(), both.size(), -1) < 0 && errno != EINTR)
            return;
        if (both[0].revents != 0 && !readSome(out.ends[0], result.out))
            out.closeEnd(0);
        if (both[1].revents != 0 && !readSome(err.ends[0], result.err))
            err.closeEnd(0);
    }
}

} // namespace

ProgramResult runProgram(const std::vector<std::string>& arguments, const std::string& purpose) {
    Pipe out, err;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, out.ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, err.ends[1], STDERR_FILENO);
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    pid_t child = 0;
    const int error = ::posix_spawnp(&child, words[0], &actions, nullptr, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw Failure(ExitCode::RenderFailed, "the program " + arguments[0] + " is needed " +
                                                  purpose + ": " + std::strerror(error));
    out.closeEnd(1);
    err.closeEnd(1);
    ProgramResult result;
    readBoth(out, err, result);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

std::string shellQuoted(const std::string& text) {
    const bool isPlain = !text.empty() && text.find_first_not_of(
                                              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                              "0123456789_-+./,:=%@") == std::string::npos;
    if (isPlain)
        return text;
    std::string quoted = "'";
    for (const char character : text)
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return quoted + "'";
}

} // namespace pbhost
