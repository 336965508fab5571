// The substitute host with the effect module set up, for the work of one command.
//
// While a session exists, standard output is redirected, because the module prints the text of
// shaders that fail: to standard error with --verbose, otherwise to /dev/null.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostkit/host.h"
#include "hostkit/module/plugin.h"
#include "pbhost/session/dialogs.h"

namespace pbhost {

struct SessionOptions {
    std::string module;               // file; empty: searched (findModule)
    std::string preferences;          // file; empty: the user's own
    std::vector<std::string> answers; // to the effect's dialogs, in order
    bool isVerbose = false;
};

class QuietOutput {
public:
    explicit QuietOutput(bool isVerbose);
    ~QuietOutput();
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;

private:
    int saved_;
};

class Session {
public:
    // Throws Failure: Usage for the module or the preferences, RenderFailed for global setup.
    explicit Session(const SessionOptions& sessionOptions);
    // Ends the module if that was not done, and reports its faults as `finish` does.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Throws Failure (RenderFailed), naming the last command, if `error` is not 0.
    void require(PF_Err error) const;

    // The lines on the Info panel since the last call, without messages of success.
    std::vector<std::string> takeMessages();

    // Exports and returns the effect's error log, which empties it.
    std::string takeErrorLog();

    // Sends global setdown and returns the module's faults and unreleased objects, one sentence
    // each.
    std::vector<std::string> end();

    // Ends the module and returns the text. The module's faults are printed with --verbose or with
    // TVELMARONDINE_STRICT=1 in the environment; the latter also makes them a Failure.
    std::string finish(std::string text);

    const SessionOptions options;
    QuietOutput quiet;
    hostkit::Host host;
    Dialogs dialogs;
    std::optional<hostkit::Plugin> plugin;
};

} // namespace pbhost
