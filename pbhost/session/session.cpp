#include "pbhost/session/session.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>
#include <utility>

#include "hostkit/calls/ledger.h"
#include "hostkit/services/memory.h"
#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/places.h"
#include "support/outcome_texts.h"

namespace pbhost {

namespace {

using Lines = hostkit::InfoPanel::Lines;

// Whether the message only reports success.
bool isSuccessMessage(const Lines& lines) {
    for (const LoadTexts& texts : {graphLoadTexts, kernelLoadTexts})
        if (lines.front() == texts.fromMemory || lines.front() == texts.fromFile)
            return true;
    return lines.back() == noErrorLog;
}

bool isStrict() {
    const char* value = std::getenv("TVELMARONDINE_STRICT");
    return value != nullptr && std::string_view(value) == "1";
}

// With a preferences file that cannot be read the host has none, and the file stays as it is.
hostkit::Host makeHost(const std::string& option) {
    const std::filesystem::path file = preferencesFile(option);
    try {
        return hostkit::Host(file);
    } catch (const std::runtime_error& error) {
        std::cerr << "pbhost: warning: " << printable(error.what())
                  << "; the preferences are not used\n";
        return hostkit::Host();
    }
}

// Prints the faults if the user or the environment asks for them.
void report(const std::vector<std::string>& faults, bool isVerbose) {
    if (faults.empty() || !(isVerbose || isStrict()))
        return;
    for (const std::string& fault : faults)
        std::cerr << "pbhost: fault of the module: " << printable(fault) << "\n";
}

} // namespace

QuietOutput::QuietOutput(bool isVerbose) : saved_(::dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int other = isVerbose ? ::dup(STDERR_FILENO) : ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (other < 0 || other == STDOUT_FILENO) // standard output was closed
        return;
    ::dup2(other, STDOUT_FILENO);
    ::close(other);
}

QuietOutput::~QuietOutput() {
    std::fflush(stdout);
    if (saved_ < 0) // standard output was closed
        return;
    ::dup2(saved_, STDOUT_FILENO);
    ::close(saved_);
}

Session::Session(const SessionOptions& sessionOptions)
    : options(sessionOptions), quiet(options.isVerbose), host(makeHost(options.preferences)),
      dialogs(options.answers) {
    host.scripts.askUser = [this](const hostkit::Question& question) {
        return dialogs.answer(question);
    };
    if (options.isVerbose)
        host.infoPanel.onMessage = [](const Lines& lines) {
            for (const std::string& line : lines)
                std::cerr << "Info: " << printable(line) << "\n";
        };
    orFail(ExitCode::Usage, "", [&] { plugin.emplace(findModule(options.module)); });
    require(plugin->setUp());
}

void Session::require(PF_Err error) const {
    if (error != PF_Err_NONE)
        throw Failure(ExitCode::RenderFailed,
                      plugin->lastCommand() + " failed with error " + std::to_string(error) +
                          (error == PF_Err_OUT_OF_MEMORY ? ", out of memory" : ""));
}

std::vector<std::string> Session::takeMessages() {
    std::vector<std::string> all;
    for (const Lines& lines : host.infoPanel.messages())
        if (!lines.empty() && !isSuccessMessage(lines))
            all.insert(all.end(), lines.begin(), lines.end());
    host.infoPanel.clear();
    return all;
}

std::string Session::takeErrorLog() {
    const TemporaryFolder folder;
    const auto onMessage = std::exchange(host.infoPanel.onMessage, {});
    const auto askUser = std::exchange(host.scripts.askUser, {});
    host.scripts.answers = {"yes", folder.path};
    require(plugin->about());
    host.infoPanel.onMessage = onMessage;
    host.scripts.askUser = askUser;
    host.infoPanel.clear();
    std::ifstream file(folder.path + errorLogFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> Session::end() {
    host.project.compositions.clear();
    plugin.reset();
    std::vector<std::string> faults = hostkit::ledger::takeFaults();
    for (const std::string& item : hostkit::ledger::outstanding())
        faults.push_back("not released: " + item);
    if (const std::size_t handles = hostkit::memory::liveHandles(); handles != 0)
        faults.push_back("not released: " + std::to_string(handles) + " memory handles");
    return faults;
}

Session::~Session() {
    if (plugin)
        report(end(), options.isVerbose);
}

std::string Session::finish(std::string text) {
    const std::vector<std::string> faults = end();
    report(faults, options.isVerbose);
    if (isStrict() && !faults.empty())
        throw Failure(ExitCode::RenderFailed, "the module caused faults");
    return text;
}

} // namespace pbhost
