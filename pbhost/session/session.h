// The substitute host with the effect module set up in it, for as long as the work of one command
// lasts.
//
// While it stands, standard output is closed to the module, which prints the text of a shader that
// fails: with --verbose that goes to standard error, else nowhere.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostkit/host.h"
#include "hostkit/module/plugin.h"
#include "pbhost/session/dialogs.h"

namespace pbhost {

struct SessionOptions {
    std::string module;               // file; empty: the usual places
    std::string preferences;          // file; empty: the user's own
    std::vector<std::string> answers; // to the effect's questions, in their order
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
    // Throws Failure: Usage for the module and the preferences, RenderFailed for the setup.
    explicit Session(const SessionOptions& sessionOptions);
    // Ends the module, unless that is done, and shows its faults as `finish` does.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Throws Failure (RenderFailed), with the command, for a command's error.
    void require(PF_Err error) const;

    // The lines of the Info panel that came since the last call, without those that say that all is
    // well.
    std::vector<std::string> takeMessages();

    // What the effect's error log holds; the log is empty from then on.
    std::string takeErrorLog();

    // Ends the module; what it did wrong in the eyes of the host, a sentence each.
    std::vector<std::string> end();

    // Ends the module and gives the text back. The module's faults are shown with --verbose, and
    // with TVELMARONDINE_STRICT=1 in the environment, where they become a Failure, too.
    std::string finish(std::string text);

    const SessionOptions options;
    QuietOutput quiet;
    hostkit::Host host;
    Dialogs dialogs;
    std::optional<hostkit::Plugin> plugin;
};

} // namespace pbhost
