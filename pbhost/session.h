// The substitute host with the effect module set up in it, for as long as the work of one verb
// lasts.
//
// While it stands, standard output is closed to the module, which prints the text of a shader that
// fails: with --verbose that goes to standard error, else nowhere.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/host.h"
#include "hostkit/plugin.h"
#include "pbhost/dialogs.h"

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

    const SessionOptions options;
    QuietOutput quiet;
    hostkit::Host host;
    Dialogs dialogs;
    std::optional<hostkit::Plugin> plugin;
};

// Makes a session, lets the work run in it and gives its answer. The module's faults are shown with
// --verbose, and end the program as a failure with TVELMARONDINE_STRICT=1 in the environment.
std::string inSession(const SessionOptions& options,
                      const std::function<std::string(Session&)>& work);

} // namespace pbhost
