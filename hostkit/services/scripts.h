// Runs an effect's scripts, including their dialogs: `alert`, `confirm`, `File.openDialog`,
// `Folder.selectDialog`.
//
// Answers are taken from a prepared list first, then from `askUser`; otherwise the dialog is
// cancelled: `confirm` returns false, a file dialog returns null. `File` and `Folder` objects have
// only the property `fsName`.
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
    std::string title;                 // of alert and confirm; all texts are UTF-8
    std::string message;               // the prompt of a file dialog
    std::string filter;                // of a file dialog
    bool flag = false;                 // alert: show an error icon; confirm: the default is no
    std::optional<std::string> answer; // "yes", "no" or a path; none: cancelled
};

struct ScriptResult {
    std::optional<std::string> value; // of the last expression; none: the script failed
    std::string error;                // reason of a failure, otherwise empty
};

class ScriptRunner {
public:
    // Prepared answers, one for each question, in order; an empty optional cancels. An alert uses
    // none.
    std::deque<std::optional<std::string>> answers;
    // Called if no answer is prepared, and for every alert; may be empty. An exception from it ends
    // the script with an error.
    std::function<std::optional<std::string>(const Question&)> askUser;

    // Runs the script in a new interpreter. The script and results are UTF-8 and end at the first
    // zero byte. An endless script never returns, because the packaged interpreter cannot be
    // interrupted.
    ScriptResult run(const std::string& script);

    const std::vector<Question>& asked() const { return asked_; } // all dialogs so far
    void clear() { asked_.clear(); }

    // Implements the dialogs; called by the interpreter.
    std::optional<std::string> ask(Question question);

private:
    std::vector<Question> asked_;
};

} // namespace hostkit
