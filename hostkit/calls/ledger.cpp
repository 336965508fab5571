#include "hostkit/calls/ledger.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <utility>

namespace hostkit::ledger {

namespace {

constexpr std::array<const char*, 9> kindNames = {
    "suite",     "memory handle",  "stream",     "effect", "stream value",
    "parameter", "keyframe batch", "undo group", "mask",
};

using Key = std::pair<Kind, const void*>;

struct Acquisition {
    std::uint64_t number; // in the order of acquisition
    std::string what;
};

struct State {
    std::uint64_t nextNumber = 0;
    std::multimap<Key, Acquisition> acquired;
    std::map<Key, std::string> known; // the last description of each key, for the texts of faults
    std::vector<std::string> faults;
};

State& state() {
    static State instance;
    return instance;
}

std::string kindName(Kind kind) {
    return kindNames.at(static_cast<std::size_t>(kind));
}

std::string describe(const Key& key, const std::string& what) {
    return kindName(key.first) + " \"" + what + "\"";
}

void faultNotAcquired(const Key& key, const char* call) {
    const auto found = state().known.find(key);
    fault(std::string(call) + ": " +
          (found == state().known.end() ? "a " + kindName(key.first) + " that was never acquired"
                                        : describe(key, found->second) + " was already released"));
}

} // namespace

void acquire(Kind kind, const void* key, const std::string& what) {
    state().acquired.insert({{kind, key}, {state().nextNumber++, what}});
    state().known[{kind, key}] = what;
}

bool release(Kind kind, const void* key, const char* call) {
    if (!requireAcquired(kind, key, call))
        return false;
    state().acquired.erase(std::prev(state().acquired.upper_bound({kind, key})));
    return true;
}

bool requireAcquired(Kind kind, const void* key, const char* call) {
    if (state().acquired.contains({kind, key}))
        return true;
    faultNotAcquired({kind, key}, call);
    return false;
}

std::vector<std::string> outstanding() {
    std::map<std::uint64_t, std::string> byNumber;
    for (const auto& [key, acquisition] : state().acquired)
        byNumber[acquisition.number] = describe(key, acquisition.what);
    std::vector<std::string> all;
    for (const auto& [number, text] : byNumber)
        all.push_back(text);
    return all;
}

void fault(const std::string& sentence) {
    state().faults.push_back(sentence);
}

std::vector<std::string> takeFaults() {
    return std::exchange(state().faults, {});
}

void reset() {
    state() = State();
}

} // namespace hostkit::ledger
