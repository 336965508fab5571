#include "pbhost/commands/live_command.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "pbhost/files/effect_file.h"
#include "pbhost/live/server/server.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

// The browser outlives this process.
void openBrowser(const std::string& url) {
    std::signal(SIGCHLD, SIG_DFL);
    if (fork() != 0)
        return;
    setsid();
    execlp("xdg-open", "xdg-open", url.c_str(), nullptr);
    std::fprintf(stderr, "pbhost: cannot open a browser: xdg-open is missing\n");
    _exit(1);
}

void addServerOptions(CLI::App& command, live::LiveRequest& request) {
    command.add_option("--listen", request.listen, "The address to listen at")
        ->capture_default_str();
    command.add_option("--port", request.port, "The port to listen at (default: a free one)")
        ->check(CLI::Range(0, 65535));
    command
        .add_option("--timeout", request.timeout,
                    "Seconds after which a render that does not end is stopped")
        ->capture_default_str()
        ->check(CLI::Range(0.1, 86400.0));
    command.add_flag("--open", request.opensBrowser, "Open the page in the browser");
}

} // namespace

void addLiveOptions(CLI::App& command, live::LiveRequest& request) {
    command.add_option("file", request.file, "The kernel (.pbk) or graph (.pbg)");
    command
        .add_option("-i,--input", request.inputs,
                    "A picture, or a sequence's pattern: the first for the layer, all for the "
                    "choice of layer controls")
        ->allow_extra_args(false);
    command.add_option("--project", request.project, "Open this project");
    command.add_option("--set", request.settings, "A control's first value, as for render")
        ->allow_extra_args(false);
    command
        .add_option("--size", request.size,
                    "Size of the layer if it has no picture, WIDTHxHEIGHT (default: 640x360)")
        ->delimiter('x')
        ->check(CLI::Range(1, 16384));
    command.add_option("--depth", request.depth, "Bits per channel (default: the picture's)")
        ->check(CLI::IsMember({8, 16, 32}));
    command.add_option("--frames", request.frames,
                       "The frames of the time slider, as for render (default: those on disk)");
    command.add_option("--fps", request.framesPerSecond, "Frames per second")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 1000.0));
    addServerOptions(command, request);
}

void serveLive(const live::LiveRequest& request, const SessionOptions& options) {
    if (request.file.empty() == request.project.empty())
        throw Failure(ExitCode::Usage, "live needs a kernel or graph file, or --project");
    if (!request.file.empty())
        requireReadable(request.file);
    live::Workspace workspace(request);
    live::serve(workspace, options, [&](const std::string& url) {
        std::printf("%s\n", url.c_str());
        std::fflush(stdout);
        if (request.opensBrowser)
            openBrowser(url);
    });
}

} // namespace pbhost
