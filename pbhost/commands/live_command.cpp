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

} // namespace

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
