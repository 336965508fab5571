#include "pbhost/live/child/render_child.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"

namespace pbhost::live {

namespace {

[[noreturn]] void becomeChild(pid_t parent, int socket, const std::function<void(int)>& work) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(1);
    // The descriptor behind the standard ones, so that the rest can be closed.
    constexpr int own = STDERR_FILENO + 1;
    if (socket != own)
        dup2(socket, own);
    close_range(own + 1, ~0U, 0);
    const int code = exitCodeOf([&] {
        work(own);
        return 0;
    });
    std::fflush(nullptr);
    _exit(code); // without exit handlers, as in runInChild
}

std::string describe(int status) {
    if (WIFEXITED(status))
        return WEXITSTATUS(status) == 0
                   ? "has ended"
                   : "has ended with exit code " + std::to_string(WEXITSTATUS(status));
    const int number = WTERMSIG(status);
    if (number == SIGKILL)
        return "was killed";
    return std::string("crashed (") + strsignal(number) + "), most likely in the OpenGL driver";
}

} // namespace

RenderChild::RenderChild(const std::function<void(int)>& work) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw Failure(ExitCode::RenderFailed,
                      std::string("cannot create a socket: ") + std::strerror(errno));
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0)
        becomeChild(parent, ends[1], work);
    ::close(ends[1]);
    socket_ = ends[0];
    if (process_ < 0) {
        ::close(socket_);
        throw Failure(ExitCode::RenderFailed,
                      std::string("cannot start a process: ") + std::strerror(errno));
    }
}

std::string RenderChild::end() {
    if (process_ == 0)
        return "";
    // A process that is ending by itself has closed its socket already; its own status is kept.
    int status = 0;
    if (waitpid(process_, &status, WNOHANG) == 0) {
        kill(process_, SIGKILL);
        while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
    }
    removeTemporaries({}, process_);
    process_ = 0;
    return describe(status);
}

RenderChild::~RenderChild() {
    end();
    ::close(socket_);
}

} // namespace pbhost::live
