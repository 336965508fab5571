#include "hostkit/ledger.h"

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

struct Loan {
    std::uint64_t number; // in the order of lending
    std::string what;
};

struct Book {
    std::uint64_t made = 0;
    std::multimap<Key, Loan> out;
    std::map<Key, std::string> known; // what was ever lent under a key: for the faults
    std::vector<std::string> faults;
};

Book& book() {
    static Book instance;
    return instance;
}

std::string kindName(Kind kind) {
    return kindNames.at(static_cast<std::size_t>(kind));
}

std::string describe(const Key& key, const std::string& what) {
    return kindName(key.first) + " \"" + what + "\"";
}

void faultNotLent(const Key& key, const char* call) {
    const auto found = book().known.find(key);
    fault(std::string(call) + ": " +
          (found == book().known.end() ? "a " + kindName(key.first) + " that was never lent"
                                       : describe(key, found->second) + " is not lent any more"));
}

} // namespace

void lend(Kind kind, const void* key, const std::string& what) {
    book().out.insert({{kind, key}, {book().made++, what}});
    book().known[{kind, key}] = what;
}

bool giveBack(Kind kind, const void* key, const char* call) {
    if (!requireLent(kind, key, call))
        return false;
    book().out.erase(std::prev(book().out.upper_bound({kind, key})));
    return true;
}

bool requireLent(Kind kind, const void* key, const char* call) {
    if (book().out.contains({kind, key}))
        return true;
    faultNotLent({kind, key}, call);
    return false;
}

std::vector<std::string> outstanding() {
    std::map<std::uint64_t, std::string> byNumber;
    for (const auto& [key, loan] : book().out)
        byNumber[loan.number] = describe(key, loan.what);
    std::vector<std::string> all;
    for (const auto& [number, text] : byNumber)
        all.push_back(text);
    return all;
}

void fault(const std::string& sentence) {
    book().faults.push_back(sentence);
}

std::vector<std::string> takeFaults() {
    return std::exchange(book().faults, {});
}

void close() {
    book() = Book();
}

} // namespace hostkit::ledger
