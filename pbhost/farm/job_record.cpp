#include "pbhost/farm/job_record.h"

#include <stdlib.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include <nlohmann/json.hpp>

#include "pbhost/files/read_file.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/sequence/fingerprint.h"
#include "pbhost/sequence/frame_ranges.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

fs::path stateFolder() {
    const char* const configured = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    if (configured != nullptr && *configured == '/')
        return fs::path(configured) / "tvelmarondine";
    return fs::path(home == nullptr ? "/tmp" : home) / ".local/state/tvelmarondine";
}

fs::path recordFile(const std::string& job) {
    if (job.empty() || job.find_first_not_of("0123456789") != std::string::npos)
        throw Failure(ExitCode::Usage, "--status " + job + ": write the number of the job");
    return stateFolder() / ("slurm-" + job + ".json");
}

} // namespace

fs::path JobRecord::log(std::size_t chunk) const {
    return folder / ("chunk-" + std::to_string(chunk) + ".log");
}

fs::path JobRecord::codeFile(std::size_t chunk) const {
    return folder / ("chunk-" + std::to_string(chunk) + ".code");
}

std::optional<int> JobRecord::code(std::size_t chunk) const {
    int number = 0;
    return std::ifstream(codeFile(chunk)) >> number ? std::optional(number) : std::nullopt;
}

std::size_t JobRecord::framesDone() const {
    std::size_t count = 0;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const bool isDone = code(i) == 0;
        for (const std::string& file : chunks[i].files)
            count += isDone || wasMadeSince(file, submitted) ? 1 : 0;
    }
    return count;
}

fs::path makeJobFolder(const std::string& outputFolder) {
    std::error_code error;
    const fs::path jobs = fs::path(outputFolder) / ".pbhost";
    fs::create_directories(jobs, error);
    std::string name = (jobs / "job-XXXXXX").string();
    if (error || ::mkdtemp(name.data()) == nullptr)
        throw Failure(ExitCode::RenderFailed,
                      jobs.string() + ": no folder for the job can be created");
    return name;
}

void storeRecord(const std::string& job, const JobRecord& record) {
    nlohmann::json chunks = nlohmann::json::array();
    for (const FarmJob::Chunk& chunk : record.chunks)
        chunks.push_back({{"frames", chunk.text}, {"files", chunk.files}});
    const nlohmann::json json = {
        {"folder", record.folder.string()}, {"submitted", record.submitted}, {"chunks", chunks}};
    std::error_code ignored;
    fs::create_directories(stateFolder(), ignored);
    writeTextFile(recordFile(job),
                  json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
}

JobRecord loadRecord(const std::string& job) {
    const std::string file = recordFile(job).string();
    const std::string text = readWholeFile(file, ExitCode::Usage);
    return orFail(ExitCode::Usage, file + ": not the record of a job: ", [&] {
        const nlohmann::json json = nlohmann::json::parse(text);
        JobRecord record;
        record.folder = json.at("folder").get<std::string>();
        record.submitted = json.at("submitted").get<std::int64_t>();
        for (const nlohmann::json& each : json.at("chunks")) {
            FarmJob::Chunk chunk;
            chunk.text = each.at("frames").get<std::string>();
            chunk.frames = parseFrames(chunk.text);
            chunk.files = each.at("files").get<std::vector<std::string>>();
            record.chunks.push_back(std::move(chunk));
        }
        return record;
    });
}

} // namespace pbhost
