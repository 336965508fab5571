// The substitute host's basic suite: lends registered tables by exact name and version, and knows
// which of them are lent at the moment.
//
// One for the process, like the memory. A suite that is given back twice, or under another version
// than it was lent, is a fault in the ledger.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "sdk/sp_basic.h"

namespace hostkit::suites {

// The table for PF_InData::pica_basicP.
SPBasicSuite& basicSuite();

// Makes a suite available; the caller keeps the table alive. A null table is lent as it is, with
// success: some hosts do that.
void offer(const std::string& name, std::int32_t version, const void* table);

// Takes all suites away again, and forgets what is lent and what is refused.
void withdrawAll();

// Whether the suite was acquired and not yet released as often.
bool isLent(const std::string& name, std::int32_t version);

struct Loan {
    std::string name;
    std::int32_t version = 0;
    std::uint64_t lent = 0;     // times given out
    std::uint64_t returned = 0; // times given back
};

// Every suite that was lent since the last `withdrawAll`, in the order of name and version.
std::vector<Loan> loans();

// From now on the suite is not lent, until `allowAll`.
void refuse(const std::string& name, std::int32_t version);
void allowAll();

// Name and version of every suite that there is, refused ones too, in their order.
std::vector<std::pair<std::string, std::int32_t>> offered();

} // namespace hostkit::suites
