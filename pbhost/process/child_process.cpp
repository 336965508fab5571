#include "pbhost/process/child_process.h"

#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"

namespace pbhost {

namespace {

constexpr int signalledCode = 128;                      // plus the signal's number, as in shells
constexpr int interrupts[] = {SIGINT, SIGTERM, SIGHUP}; // signals that users send to end a program

// Atomic, because the signal may be delivered to a thread of a library.
std::atomic<int> caughtSignal = 0;
std::atomic<pid_t> worker = 0;
std::atomic<bool> isTimedOut = false;

void endWorker(int number) {
    caughtSignal = number;
    if (worker != 0)
        kill(worker, SIGKILL);
}

void endLateWorker(int) {
    isTimedOut = true;
    if (worker != 0)
        kill(worker, SIGKILL);
}

// Zero seconds stop the timer.
void startTimer(double seconds) {
    constexpr double longest = 1e9;
    itimerval timer{};
    const double whole = std::floor(std::min(seconds, longest));
    timer.it_value.tv_sec = static_cast<time_t>(whole);
    timer.it_value.tv_usec = static_cast<suseconds_t>((std::min(seconds, longest) - whole) * 1e6);
    if (seconds > 0 && timer.it_value.tv_sec == 0 && timer.it_value.tv_usec == 0)
        timer.it_value.tv_usec = 1;
    std::signal(SIGALRM, endLateWorker);
    setitimer(ITIMER_REAL, &timer, nullptr);
}

// Signals that are ignored stay ignored.
void catchInterrupts() {
    for (const int number : interrupts) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_IGN)
            std::signal(number, endWorker);
    }
    std::signal(SIGCHLD, SIG_DFL); // waitpid would fail if SIGCHLD were ignored
}

bool isCaught(int number) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    return action.sa_handler == endWorker;
}

// Exit code for a child that a signal ended.
int codeOfSignal(int number, const std::string& subject) {
    const std::string who = "the child process";
    const std::string over = subject.empty() ? "" : " over " + subject;
    switch (number) {
    case SIGINT: // sent by the terminal to both processes
    case SIGTERM:
    case SIGHUP:
    case SIGPIPE: // the reader of the output has closed it
        return signalledCode + number;
    case SIGKILL:
        throw Failure(ExitCode::Crashed, who + over + " was killed; nothing was written");
    default:
        throw Failure(ExitCode::Crashed, who + " crashed (" + strsignal(number) +
                                             "), most likely in the OpenGL driver" + over +
                                             "; nothing was written");
    }
}

[[noreturn]] void becomeWorker(pid_t parent, const std::function<int()>& work) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) // the parent has already ended
        _exit(static_cast<int>(ExitCode::Crashed));
    for (const int number : interrupts)
        if (isCaught(number))
            std::signal(number, SIG_DFL);
    const int code = exitCodeOf(work);
    std::fflush(nullptr);
    _exit(code);
}

} // namespace

int runInChild(const std::function<int()>& work, const std::string& subject,
               const std::vector<std::filesystem::path>& folders, double timeoutSeconds) {
    catchInterrupts();
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0)
        throw Failure(ExitCode::RenderFailed,
                      std::string("cannot start a process: ") + std::strerror(errno));
    if (child == 0)
        becomeWorker(parent, work);
    worker = child;
    if (caughtSignal != 0)
        kill(child, SIGKILL);
    startTimer(timeoutSeconds);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    worker = 0;
    startTimer(0);
    removeTemporaries(folders, child);
    if (caughtSignal != 0)
        return signalledCode + caughtSignal;
    if (isTimedOut && WIFSIGNALED(status))
        throw Failure(ExitCode::Crashed, (subject.empty() ? "the work" : subject) +
                                             ": not done in the time of --timeout; nothing was "
                                             "written");
    return WIFEXITED(status) ? WEXITSTATUS(status) : codeOfSignal(WTERMSIG(status), subject);
}

} // namespace pbhost
