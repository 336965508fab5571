// The substitute host's basic suite, with which a module acquires and releases suites by exact name
// and version.
//
// The state is global to the process. Releasing a suite that is not acquired in that version is a
// fault in the ledger.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "sdk/sp_basic.h"

namespace hostkit::suites {

// Value for PF_InData::pica_basicP.
SPBasicSuite& basicSuite();

// Registers a suite; the caller keeps the table alive. Acquiring a suite with a null table succeeds
// and returns null, as some hosts do.
void offer(const std::string& name, std::int32_t version, const void* table);

// Removes all suites and their acquisition counts.
void reset();

// Whether the suite has been acquired more often than released.
bool isAcquired(const std::string& name, std::int32_t version);

struct Usage {
    std::string name;
    std::int32_t version = 0;
    std::uint64_t acquired = 0; // number of acquisitions
    std::uint64_t released = 0; // number of releases
};

// Usage of every suite that was acquired since the last `reset`, ordered by name and version.
std::vector<Usage> usage();

// Makes acquisition of the suite fail until `allowAll`.
void refuse(const std::string& name, std::int32_t version);
void allowAll();

// Name and version of every registered suite, including refused ones, in order.
std::vector<std::pair<std::string, std::int32_t>> offered();

} // namespace hostkit::suites
