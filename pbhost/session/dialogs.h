// Answers the effect's dialogs: first from the answers of the command line, then by asking on the
// terminal. Without a terminal, dialogs are cancelled.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/services/scripts.h"

namespace pbhost {

class Dialogs {
public:
    // An empty answer cancels its dialog.
    explicit Dialogs(const std::vector<std::string>& answersAhead);

    // Answers one dialog; a path becomes absolute. Alerts are printed to standard error, unless
    // prepared answers are left, because then no user needs them.
    std::optional<std::string> answer(const hostkit::Question& question);

    // Inserts answers for the next dialogs, before all others.
    void prepare(const std::vector<std::string>& next);

private:
    std::deque<std::string> answers_;
};

} // namespace pbhost
