#include "hostkit/project/undo.h"

#include <memory>
#include <utility>

#include "hostkit/project/streams.h"

namespace hostkit {

void UndoHistory::startGroup(const std::string& name) {
    if (depth_++ == 0)
        steps_.push_back({name, {}});
}

bool UndoHistory::endGroup() {
    if (depth_ == 0)
        return false;
    if (--depth_ == 0 && steps_.back().reversals.empty())
        steps_.pop_back();
    return true;
}

void UndoHistory::record(std::function<void()> reversal) {
    if (depth_ == 0)
        steps_.emplace_back();
    steps_.back().reversals.push_back(std::move(reversal));
}

void UndoHistory::record(Stream& stream, std::function<void(Stream&)> reversal) {
    record([watched = stream.live.watch(), reversal = std::move(reversal)] {
        if (const auto live = watched.lock())
            reversal(*live);
    });
}

bool UndoHistory::undo() {
    if (depth_ > 0 || steps_.empty())
        return false;
    const Step step = std::move(steps_.back());
    steps_.pop_back();
    for (auto reversal = step.reversals.rbegin(); reversal != step.reversals.rend(); ++reversal)
        (*reversal)();
    return true;
}

} // namespace hostkit
