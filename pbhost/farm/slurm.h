// Jobs of the workload manager Slurm: an array of tasks, one for each chunk of frames. What is done
// is read from the files on disk, because a manager without a database forgets its jobs.
#pragma once

#include <string>
#include <vector>

#include "pbhost/farm/farm_job.h"

namespace pbhost {

struct SlurmRequest {
    FarmRequest farm;
    std::string partition;
    std::string gres;                       // such as gpu:1
    std::vector<std::string> sbatchOptions; // passed on
    int retries = 2;                        // of a task whose program crashes or is killed
    bool waits = false;
    std::string status; // the id of a job whose state is asked for
};

// The command `submit slurm`: submits the job and returns the line with its id, or the state of a
// job. With `waits` returns when all frames are there. Throws Failure; with the exit code of the
// first chunk that failed, naming its frames and its log.
std::string submitToSlurm(const SlurmRequest& request);

} // namespace pbhost
