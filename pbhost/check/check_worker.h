// A child process that checks files, one after the other, so that a crash of the driver ends only
// it. It has its own OpenGL context, which its parent never touches.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

#include "pbhost/check/file_check.h"

namespace pbhost {

class CheckWorker {
public:
    using Clock = std::chrono::steady_clock;

    // The process is started for the first request. Zero seconds: no limit.
    explicit CheckWorker(double timeoutSeconds) : timeout_(timeoutSeconds) {}
    ~CheckWorker() { stop(); }
    CheckWorker(CheckWorker&& other) noexcept;
    CheckWorker& operator=(CheckWorker&&) = delete;

    // Sends a request; the worker must be idle. Throws Failure if no process can be started.
    void send(const CheckRequest& request);

    bool isBusy() const { return !file_.empty(); }

    // The descriptor to poll for reading while the worker is busy.
    int descriptor() const { return channel_; }

    // When the work must be done at the latest.
    std::optional<Clock::time_point> deadline() const { return deadline_; }

    // Reads what has arrived; the findings when they are complete. The process's crash, and its
    // time limit at the deadline, are findings; the next request then starts a new process. Throws
    // Failure if the process cannot work at all.
    std::optional<Diagnostics> receive();

    // Ends the process, and gives up the request.
    void stop();

private:
    void start();
    Diagnostics ended(Diagnostic finding);
    Diagnostic crashFinding() const;
    Diagnostic timeoutFinding() const;
    void reap(int& status);

    double timeout_;
    pid_t process_ = 0; // 0: none
    int channel_ = -1;
    std::string file_; // being checked; empty: idle
    std::string received_;
    std::optional<Clock::time_point> deadline_;
};

} // namespace pbhost
