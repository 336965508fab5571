// Checks whether the effect could load its file, and explains failures.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/effect/effect.h"
#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/session.h"

namespace pbhost {

// A kernel or graph cannot be used. The message contains the findings as text, too.
class KernelFailure : public Failure {
public:
    KernelFailure(ExitCode exitCode, const std::string& message, Diagnostics findings)
        : Failure(exitCode, message), found(std::move(findings)) {}

    Diagnostics found;
};

// Whether the instance has loaded a graph or kernel; if not, its title says so.
bool hasGraph(const hostkit::Effect& effect);

// The failure for an instance without a graph: the effect's messages, and findings about the file.
// `shownName` is the user's name of the input, `file` the kernel or graph itself, which may be
// missing.
KernelFailure cannotBeRun(hostkit::Host& host, const std::string& shownName,
                          const std::string& file, const std::vector<std::string>& messages);

// How findings about a file are treated.
struct FindingOptions {
    bool isStrict = false; // warnings are errors
    bool isQuiet = false;  // warnings are not shown
};

// What is known about a file that the effect has loaded.
struct FileReport {
    std::size_t inputs = 0;            // of the kernel or graph; may exceed the effect's limit
    Diagnostics found;                 // sorted
    std::vector<std::string> messages; // others of the effect
    bool doesCompile = true;
};

// Examines the file, and the driver's log if the effect's messages say that a program has failed.
FileReport reportOnFile(Session& session, const std::string& file,
                        const std::vector<std::string>& messages);

// Prints the report to standard error. Throws KernelFailure if it contains an error or, when
// strict, a warning. A program that does not compile is an error even if its log is lost.
void requireGood(const FileReport& report, const std::string& shownName,
                 const FindingOptions& options);

} // namespace pbhost
