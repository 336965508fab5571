// Runs the scripts with which an effect speaks to the user, and finds the answers to their
// questions: `alert`, `confirm`, `File.openDialog`, `Folder.selectDialog`.
//
// Answers come from the list of prepared ones first, then from whoever is asked (a terminal), and
// else the question is cancelled: `confirm` is no, a chooser gives null. `File` and `Folder`
// objects have their `fsName` and nothing more.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace hostkit {

struct Question {
    enum class Kind { Alert, Confirm, OpenFile, SelectFolder };
    Kind kind;
    std::string title;                 // of alert and confirm; UTF-8 as all texts here
    std::string message;               // or the prompt of a chooser
    std::string filter;                // of OpenFile
    bool flag = false;                 // alert: an error icon; confirm: no is the default
    std::optional<std::string> answer; // what was answered: "yes", "no" or a path; none: cancelled
};

struct ScriptResult {
    std::optional<std::string> value; // the last expression as text; none when the script failed
    std::string error;                // why it failed; empty when it did not
};

class ScriptRunner {
public:
    // For one question each, in order; an empty optional cancels. An alert takes none.
    std::deque<std::optional<std::string>> answers;
    // Asked when no answer is prepared, and shown every alert; may be empty. What it throws ends
    // the script as an error.
    std::function<std::optional<std::string>(const Question&)> person;

    // In an interpreter of its own, UTF-8 in and out; a zero byte ends every text. A script that
    // never ends is not guarded against: the packaged interpreter cannot be interrupted.
    ScriptResult run(const std::string& script);

    const std::vector<Question>& asked() const { return asked_; } // every dialog so far
    void clear() { asked_.clear(); }

    // What `alert` and the others end in, for the interpreter.
    std::optional<std::string> ask(Question question);

private:
    std::vector<Question> asked_;
};

} // namespace hostkit
