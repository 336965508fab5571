// The substitute host's basic suite, by which a module acquires and releases suites: registered
// tables, found by exact name and version.
//
// One for the process, like the memory. Releasing a suite twice, or under another version
// than it was acquired, is a fault in the ledger.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "sdk/sp_basic.h"

namespace hostkit::suites {

// The table for PF_InData::pica_basicP.
SPBasicSuite& basicSuite();

// Makes a suite available; the caller keeps the table alive. A null table is acquired with
// success: some hosts do that.
void offer(const std::string& name, std::int32_t version, const void* table);

// Removes all suites, and forgets what is acquired and what is refused.
void withdrawAll();

// Whether the suite was acquired and not yet released as often.
bool isAcquired(const std::string& name, std::int32_t version);

struct Usage {
    std::string name;
    std::int32_t version = 0;
    std::uint64_t acquired = 0; // how often
    std::uint64_t released = 0; // how often
};

// Every suite that was acquired since the last `withdrawAll`, in the order of name and version.
std::vector<Usage> usage();

// From now on the suite cannot be acquired, until `allowAll`.
void refuse(const std::string& name, std::int32_t version);
void allowAll();

// Name and version of every suite that there is, refused ones too, in their order.
std::vector<std::pair<std::string, std::int32_t>> offered();

} // namespace hostkit::suites
