#include "hostkit/suites.h"

#include <map>
#include <utility>

namespace hostkit::suites {

namespace {

constexpr SPErr refused = 1;

struct Suite {
    bool isOffered = false;
    const void* table = nullptr;
    std::uint64_t lent = 0;
    std::uint64_t returned = 0;
};

struct Suites {
    std::map<std::pair<std::string, std::int32_t>, Suite> byName;
    std::vector<std::string> faults;
};

Suites& suites() {
    static Suites instance;
    return instance;
}

SPErr acquire(const char* name, std::int32_t version, const void** table) {
    const auto found = suites().byName.find({name, version});
    if (found == suites().byName.end() || !found->second.isOffered)
        return refused;
    ++found->second.lent;
    *table = found->second.table;
    return 0;
}

SPErr release(const char* name, std::int32_t version) {
    Suite& suite = suites().byName[{name, version}];
    if (suite.returned < suite.lent) {
        ++suite.returned;
        return 0;
    }
    suites().faults.push_back(std::string("ReleaseSuite of a suite that is not lent: ") + name +
                              " " + std::to_string(version));
    return refused;
}

} // namespace

SPBasicSuite& basicSuite() {
    static SPBasicSuite table = {acquire, release};
    return table;
}

void offer(const std::string& name, std::int32_t version, const void* table) {
    Suite& suite = suites().byName[{name, version}];
    suite.isOffered = true;
    suite.table = table;
}

void withdrawAll() {
    suites().byName.clear();
}

std::vector<Loan> loans() {
    std::vector<Loan> all;
    for (const auto& [key, suite] : suites().byName)
        if (suite.lent > 0)
            all.push_back({key.first, key.second, suite.lent, suite.returned});
    return all;
}

std::vector<std::string> takeFaults() {
    return std::exchange(suites().faults, {});
}

} // namespace hostkit::suites
