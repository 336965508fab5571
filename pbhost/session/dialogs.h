// The person in front of the effect's dialogs: answers given ahead on the command line first, then
// whoever sits at the terminal. Without a terminal a question is cancelled.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/services/scripts.h"

namespace pbhost {

class Dialogs {
public:
    // An empty answer cancels its question.
    explicit Dialogs(const std::vector<std::string>& answersAhead);

    // Answers one question, a path as an absolute one. Alerts go to standard error, unless there
    // are answers yet: then nobody is there to need them.
    std::optional<std::string> answer(const hostkit::Question& question);

    // For the next questions, before all others.
    void prepare(const std::vector<std::string>& next);

private:
    std::deque<std::string> answers_;
};

} // namespace pbhost
