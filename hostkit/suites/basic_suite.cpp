#include "hostkit/suites/basic_suite.h"

#include <map>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"

namespace hostkit::suites {

namespace {

constexpr SPErr refusal = 1;

struct Suite {
    const void* table = nullptr;
    bool isRefused = false;
    std::uint64_t acquired = 0;
    std::uint64_t released = 0;
};

using Suites = std::map<std::pair<std::string, std::int32_t>, Suite>;

Suites& suites() {
    static Suites instance;
    return instance;
}

std::string describe(const std::string& name, std::int32_t version) {
    return name + " " + std::to_string(version);
}

SPErr acquire(const char* name, std::int32_t version, const void** table) {
    constexpr const char* call = "AcquireSuite";
    if (const PF_Err error = calls::enter(call); error != 0)
        return error;
    if (name == nullptr || table == nullptr) {
        ledger::fault(std::string(call) + ": the name or the table pointer is null");
        return refusal;
    }
    const auto found = suites().find({name, version});
    if (found == suites().end() || found->second.isRefused)
        return refusal;
    Suite& suite = found->second;
    ++suite.acquired;
    ledger::acquire(ledger::Kind::Suite, &suite, describe(name, version));
    *table = suite.table;
    return 0;
}

SPErr release(const char* name, std::int32_t version) {
    constexpr const char* call = "ReleaseSuite";
    if (const PF_Err error = calls::enter(call); error != 0)
        return error;
    const auto found = suites().find({name == nullptr ? "" : name, version});
    if (found == suites().end() || found->second.released == found->second.acquired) {
        const std::string what = name == nullptr ? "(no name)" : describe(name, version);
        ledger::fault(std::string(call) + ": " + what + " is not acquired");
        return refusal;
    }
    ++found->second.released;
    ledger::release(ledger::Kind::Suite, &found->second, call);
    return 0;
}

} // namespace

SPBasicSuite& basicSuite() {
    static SPBasicSuite table = {acquire, release};
    return table;
}

void offer(const std::string& name, std::int32_t version, const void* table) {
    suites()[{name, version}].table = table;
}

void reset() {
    for (const auto& [key, suite] : suites())
        for (std::uint64_t out = suite.acquired - suite.released; out > 0; --out)
            ledger::release(ledger::Kind::Suite, &suite, "reset");
    suites().clear();
}

bool isAcquired(const std::string& name, std::int32_t version) {
    const auto found = suites().find({name, version});
    return found != suites().end() && found->second.released < found->second.acquired;
}

std::vector<Usage> usage() {
    std::vector<Usage> all;
    for (const auto& [key, suite] : suites())
        if (suite.acquired > 0)
            all.push_back({key.first, key.second, suite.acquired, suite.released});
    return all;
}

void refuse(const std::string& name, std::int32_t version) {
    const auto found = suites().find({name, version});
    if (found != suites().end())
        found->second.isRefused = true;
}

void allowAll() {
    for (auto& [key, suite] : suites())
        suite.isRefused = false;
}

std::vector<std::pair<std::string, std::int32_t>> offered() {
    std::vector<std::pair<std::string, std::int32_t>> all;
    for (const auto& [key, suite] : suites())
        all.push_back(key);
    return all;
}

} // namespace hostkit::suites
