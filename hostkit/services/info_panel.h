// The Info panel: the short messages that effects show to the user, one to three lines each.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace hostkit {

class InfoPanel {
public:
    using Lines = std::vector<std::string>; // UTF-8, without line ends

    // Called for each message, if set; messages are stored in any case.
    std::function<void(const Lines&)> onMessage;

    void show(Lines lines);
    const std::vector<Lines>& messages() const { return messages_; }
    void clear() { messages_.clear(); }

private:
    std::vector<Lines> messages_;
};

} // namespace hostkit
