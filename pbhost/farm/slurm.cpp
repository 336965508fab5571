#include "pbhost/farm/slurm.h"

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <sstream>
#include <thread>

#include "pbhost/farm/job_record.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/run_program.h"
#include "pbhost/process/temporary_files.h"

namespace pbhost {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr const char* purpose = "to submit jobs to Slurm";

std::string replaced(std::string text, char from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, 1, to);
    return text;
}

// The script of each task. A program that was killed or crashed is started again: what it completed
// is not rendered again.
std::string scriptOf(const FarmJob& job, const JobRecord& record, const SlurmRequest& request) {
    std::ostringstream script;
    // % begins a placeholder in the name of the log.
    script
        << "#!/bin/bash\n#SBATCH --job-name=pbhost\n#SBATCH --requeue\n#SBATCH --open-mode=append\n"
        << "#SBATCH --array=0-" << job.chunks.size() - 1 << "\nchunks=(";
    for (const FarmJob::Chunk& chunk : job.chunks)
        script << " " << chunk.text;
    script << " )\nframes=${chunks[$SLURM_ARRAY_TASK_ID]}\n"
           << "code_file=" << shellQuoted(record.folder.string())
           << "/chunk-$SLURM_ARRAY_TASK_ID.code\n"
           << "rm -f \"$code_file\"\n"
           << "for attempt in {0.." << request.retries << "}; do\n"
           << "    echo \"$(hostname), attempt $attempt: frames $frames\"\n"
           << "    " << job.command("\"$frames\"") << "\n"
           << "    code=$?\n"
           << "    # 5 is a crash, 128 and more a signal; other failures would fail again.\n"
           << "    [ $code -eq 5 ] || [ $code -ge 128 ] || break\n"
           << "done\n"
           << "echo $code > \"$code_file\"\nexit $code\n";
    return script.str();
}

std::string submitScript(const fs::path& script, const JobRecord& record,
                         const SlurmRequest& request) {
    std::vector<std::string> words = {"sbatch", "--parsable", "--output",
                                      replaced(record.folder.string(), '%', "%%") +
                                          "/chunk-%a.log"};
    if (!request.partition.empty())
        words.insert(words.end(), {"--partition", request.partition});
    if (!request.gres.empty())
        words.insert(words.end(), {"--gres", request.gres});
    words.insert(words.end(), request.sbatchOptions.begin(), request.sbatchOptions.end());
    words.push_back(script.string());
    const ProgramResult result = runProgram(words, purpose);
    if (result.code != 0)
        throw Failure(ExitCode::RenderFailed, "sbatch failed: " + result.err);
    return result.out.substr(0, result.out.find_first_of(";\n"));
}

// The states of the job's tasks that have not ended, one a line; empty when all have.
std::string pendingTasks(const std::string& job) {
    const ProgramResult result =
        runProgram({"squeue", "--noheader", "--array", "--jobs", job, "--format", "%T"}, purpose);
    if (result.code == 0)
        return result.out;
    // The manager forgets jobs that have ended.
    if (result.err.find("Invalid job id") != std::string::npos)
        return "";
    throw Failure(ExitCode::RenderFailed, "squeue failed: " + result.err);
}

void requireSuccess(const JobRecord& record) {
    for (std::size_t i = 0; i < record.chunks.size(); ++i) {
        const std::optional<int> code = record.code(i);
        if (code == 0)
            continue;
        const std::string what = "the frames " + record.chunks[i].text + " failed";
        const std::string why = code ? ", exit code " + std::to_string(*code)
                                     : std::string(": the task was ended by the farm");
        throw Failure(code ? static_cast<ExitCode>(*code) : ExitCode::RenderFailed,
                      what + why + "; see " + record.log(i).string());
    }
}

std::string stateOf(const JobRecord& record) {
    std::size_t total = 0;
    for (const FarmJob::Chunk& chunk : record.chunks)
        total += chunk.frames.size();
    return std::to_string(record.framesDone()) + " of " + std::to_string(total) + " frames";
}

void waitFor(const std::string& job, const JobRecord& record, bool isQuiet) {
    constexpr auto pause = 1s;
    constexpr int pausesBetweenLines = 10;
    const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
    for (int i = 0; !pendingTasks(job).empty(); ++i) {
        if (!isQuiet && isTerminal)
            std::cerr << "\r\033[Kjob " << job << ": " << stateOf(record) << std::flush;
        else if (!isQuiet && i % pausesBetweenLines == 0)
            std::cerr << "pbhost: job " << job << ": " << stateOf(record) << "\n";
        std::this_thread::sleep_for(pause);
    }
    if (isTerminal && !isQuiet)
        std::cerr << "\r\033[K";
    if (!isQuiet)
        std::cerr << "pbhost: job " << job << ": " << stateOf(record) << "\n";
    requireSuccess(record);
}

std::string showStatus(const std::string& job) {
    const JobRecord record = loadRecord(job);
    const std::string pending = pendingTasks(job);
    std::string text = "job " + job + ": " + stateOf(record);
    if (pending.empty()) {
        requireSuccess(record);
        return text + ", ended\n";
    }
    std::size_t running = 0, waiting = 0;
    std::istringstream lines(pending);
    for (std::string line; std::getline(lines, line);)
        (line == "RUNNING" || line == "COMPLETING" ? running : waiting) += 1;
    return text + ", " + std::to_string(running) + " tasks running, " + std::to_string(waiting) +
           " waiting\n";
}

} // namespace

std::string submitToSlurm(const SlurmRequest& request) {
    if (!request.status.empty())
        return showStatus(request.status);
    const FarmJob job(request.farm);
    JobRecord record;
    record.folder = makeJobFolder(job.outputFolder);
    record.chunks = job.chunks;
    for (FarmJob::Chunk& chunk : record.chunks)
        for (std::string& file : chunk.files)
            file = fs::absolute(file).string();
    record.submitted = std::chrono::duration_cast<std::chrono::seconds>(
                           std::chrono::system_clock::now().time_since_epoch())
                           .count();
    const fs::path script = record.folder / "job.sh";
    writeTextFile(script, scriptOf(job, record, request));
    const std::string id = submitScript(script, record, request);
    storeRecord(id, record);
    if (!request.waits)
        return id + "\n";
    std::cerr << "pbhost: job " << id << " with " << job.chunks.size() << " tasks\n";
    waitFor(id, record, request.farm.render.sequence.progress == "none");
    return id + "\n";
}

} // namespace pbhost
