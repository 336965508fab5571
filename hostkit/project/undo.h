// The undo history: records every undoable change that an effect makes to a stream.
//
// A change outside a group is one undo step. Groups nest; the outermost group is one step. A group
// without changes is no step.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace hostkit {

class Stream;

class UndoHistory {
public:
    struct Step {
        std::string name;                             // of the group; may be empty
        std::vector<std::function<void()>> reversals; // in the order of the changes
    };

    void startGroup(const std::string& name);
    bool endGroup(); // false: no group is open
    void record(std::function<void()> reversal);

    // The same for a change of a stream; undo skips the change if the stream no longer exists.
    void record(Stream& stream, std::function<void(Stream&)> reversal);

    // Undoes the newest step. Returns false if there is none or if a group is open.
    bool undo();

    const std::vector<Step>& steps() const { return steps_; }

private:
    int depth_ = 0;
    std::vector<Step> steps_;
};

} // namespace hostkit
