// The undo history: every change that an effect makes to a stream in an undoable way, in groups.
//
// A change outside a group is a step of its own. Groups nest; the outermost one is the step. A
// group in which nothing changed leaves no step.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace hostkit {

class Stream;

class UndoHistory {
public:
    struct Step {
        std::string name;                             // of the group, may be empty
        std::vector<std::function<void()>> reversals; // in the order of the changes
    };

    void startGroup(const std::string& name);
    bool endGroup(); // false: none is open
    void record(std::function<void()> reversal);

    // The same for a stream, which may be gone by then with its layer or effect: then it is left
    // out.
    void record(Stream& stream, std::function<void(Stream&)> reversal);

    // Takes the newest step back; false: there is none, or a group is open.
    bool undo();

    const std::vector<Step>& steps() const { return steps_; }

private:
    int depth_ = 0;
    std::vector<Step> steps_;
};

} // namespace hostkit
