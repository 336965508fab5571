#include "pbhost/check/check_worker.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "pbhost/check/diagnostic_json.h"
#include "pbhost/process/channel.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

// A message is one line of JSON.
bool sendLine(int channel, const Json& json) {
    const std::string line = json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    return sendAll(channel, line.data(), line.size());
}

// The next line from a channel; nothing at its end.
std::optional<std::string> readLine(int descriptor, std::string& buffer) {
    for (std::size_t end = buffer.find('\n');; end = buffer.find('\n')) {
        if (end != std::string::npos) {
            std::string line = buffer.substr(0, end);
            buffer.erase(0, end + 1);
            return line;
        }
        if (!readSome(descriptor, buffer))
            return std::nullopt;
    }
}

CheckRequest requestOf(const Json& json) {
    CheckRequest request{json.at("file"), {}};
    if (json.contains("text"))
        request.text = json.at("text").get<std::string>();
    return request;
}

// The work of the child. Standard output belongs to the parent, and libraries may write to it.
void serve(int channel) {
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(nothing, STDOUT_FILENO);
    try {
        hostkit::Host host;
        const ProgramCompiler compiler;
        std::string buffer;
        while (const auto line = readLine(channel, buffer)) {
            const CheckRequest request = requestOf(Json::parse(*line));
            if (!sendLine(channel, asJson(checkFile(host, compiler, request))))
                return;
        }
    } catch (const Failure& failure) {
        sendLine(channel, {{"failure", failure.what()}});
    }
}

[[noreturn]] void becomeWorker(pid_t parent, int channel) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) // the parent has already ended
        _exit(1);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGALRM})
        std::signal(number, SIG_DFL);
    _exit(exitCodeOf([&] {
        serve(channel);
        return 0;
    }));
}

std::string secondsText(double seconds) {
    std::string text = std::to_string(seconds);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

} // namespace

CheckWorker::CheckWorker(CheckWorker&& other) noexcept
    : timeout_(other.timeout_), process_(std::exchange(other.process_, 0)),
      channel_(std::exchange(other.channel_, -1)), file_(std::exchange(other.file_, "")),
      received_(std::move(other.received_)), deadline_(other.deadline_) {}

void CheckWorker::start() {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw Failure(ExitCode::RenderFailed,
                      std::string("cannot start a process: ") + std::strerror(errno));
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        ::close(ends[0]);
        becomeWorker(parent, ends[1]);
    }
    ::close(ends[1]);
    channel_ = ends[0];
    if (process_ < 0) {
        process_ = 0;
        throw Failure(ExitCode::RenderFailed,
                      std::string("cannot start a process: ") + std::strerror(errno));
    }
}

void CheckWorker::send(const CheckRequest& request) {
    if (process_ == 0)
        start();
    file_ = request.file;
    received_.clear();
    if (timeout_ > 0)
        deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                       std::chrono::duration<double>(timeout_));
    Json json = {{"file", request.file}};
    if (request.text)
        json["text"] = *request.text;
    sendLine(channel_, json); // if the process has ended, receive() finds out
}

std::optional<Diagnostics> CheckWorker::receive() {
    if (deadline_ && Clock::now() >= *deadline_)
        return ended(timeoutFinding());
    const bool isOpen = readSome(channel_, received_);
    if (!isOpen)
        return ended(crashFinding());
    if (!received_.ends_with('\n'))
        return std::nullopt;
    const Json json = Json::parse(received_);
    if (json.is_object()) {
        stop();
        throw Failure(ExitCode::RenderFailed, json.at("failure").get<std::string>());
    }
    file_.clear();
    deadline_.reset();
    return diagnosticsOf(json);
}

Diagnostics CheckWorker::ended(Diagnostic finding) {
    int status = 0;
    reap(status);
    if (finding.rule == "driver-crash")
        finding.message += WIFSIGNALED(status)
                               ? " (" + std::string(strsignal(WTERMSIG(status))) + ")"
                               : " (exit code " + std::to_string(WEXITSTATUS(status)) + ")";
    return {std::move(finding)};
}

Diagnostic CheckWorker::crashFinding() const {
    Diagnostic finding;
    finding.file = file_;
    finding.rule = "driver-crash";
    finding.message = "the process that compiles it crashed, most likely in the OpenGL driver";
    return finding;
}

Diagnostic CheckWorker::timeoutFinding() const {
    Diagnostic finding;
    finding.file = file_;
    finding.rule = "driver-timeout";
    finding.message = "the driver has not compiled it in " + secondsText(timeout_) + " seconds";
    return finding;
}

void CheckWorker::reap(int& status) {
    if (process_ != 0) {
        ::kill(process_, SIGKILL); // no effect on one that has ended
        while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
        ::close(channel_);
    }
    process_ = 0;
    channel_ = -1;
    file_.clear();
    deadline_.reset();
}

void CheckWorker::stop() {
    int ignored = 0;
    reap(ignored);
}

} // namespace pbhost
