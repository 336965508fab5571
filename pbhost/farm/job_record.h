// The folder of a submitted job, with its script, the logs and the exit codes of its chunks, and
// the record by which the job is found again.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "pbhost/farm/farm_job.h"

namespace pbhost {

struct JobRecord {
    std::filesystem::path folder;
    std::vector<FarmJob::Chunk> chunks;
    std::int64_t submitted = 0; // seconds since 1970

    std::filesystem::path log(std::size_t chunk) const;
    std::filesystem::path codeFile(std::size_t chunk) const;
    // The exit code of a chunk that has ended.
    std::optional<int> code(std::size_t chunk) const;
    // The frames that are complete: all of a chunk that succeeded, else those written since.
    std::size_t framesDone() const;
};

// Creates an empty folder for a job below the output folder. Throws Failure (RenderFailed).
std::filesystem::path makeJobFolder(const std::string& outputFolder);

// Stores the record under the job's id for this user. Throws Failure (RenderFailed).
void storeRecord(const std::string& job, const JobRecord& record);
// Throws Failure (Usage) if there is none.
JobRecord loadRecord(const std::string& job);

} // namespace pbhost
