#include "hostkit/calls/calls.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/calls/ledger.h"
#include "hostkit/services/movable_block.h"

namespace hostkit::calls {

namespace {

struct Failure {
    std::string name; // empty: any call
    std::uint64_t remaining;
    PF_Err code;
};

struct Hook {
    std::string name;
    std::function<void()> event;
};

struct Calls {
    std::uint64_t count = 0;
    std::optional<Failure> failure;
    std::string failed;
    std::vector<Hook> hooks;
};

Calls& calls() {
    static Calls instance;
    return instance;
}

PF_Err failureOf(std::string_view name) {
    std::optional<Failure>& failure = calls().failure;
    if (!failure || (!failure->name.empty() && failure->name != name) || --failure->remaining > 0)
        return PF_Err_NONE;
    calls().failed = name;
    return std::exchange(failure, {})->code;
}

void runHook(std::string_view name) {
    std::vector<Hook>& hooks = calls().hooks;
    const auto hook = std::ranges::find(hooks, name, &Hook::name);
    if (hook == hooks.end())
        return;
    // Erased before it runs, because the event makes calls of its own.
    const std::function<void()> event = std::move(hook->event);
    hooks.erase(hook);
    try {
        event();
    } catch (const std::exception& error) {
        ledger::fault(std::string(name) + ": the test's hook threw: " + error.what());
    }
}

} // namespace

PF_Err enter(const char* name) {
    ++calls().count;
    MovableBlock::moveUnlocked();
    // Decided before the hook runs, because the hook's own calls count too.
    const PF_Err error = failureOf(name);
    runHook(name);
    return error;
}

std::uint64_t count() {
    return calls().count;
}

void reset() {
    calls() = Calls();
}

void failAt(std::uint64_t n, PF_Err code) {
    failAt(std::string(), n, code);
}

void failAt(const std::string& name, std::uint64_t n, PF_Err code) {
    calls().failure.reset();
    if (n > 0)
        calls().failure = Failure{name, n, code};
}

std::string failedCall() {
    return calls().failed;
}

void onNext(const std::string& name, std::function<void()> event) {
    calls().hooks.push_back({name, std::move(event)});
}

} // namespace hostkit::calls
