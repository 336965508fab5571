// The command `check`: finds the faults of many kernels and graphs without rendering.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pbhost {

struct CheckCommandRequest {
    std::vector<std::string> paths; // files, and folders with all that is below them
    std::string format = "gcc";     // of reportFormats
    std::size_t jobs = 0;           // processes at a time; 0: as many as there are processors
    double timeout = 30;            // seconds for each file; 0: no limit
    bool isStrict = false;          // warnings fail, too
    bool isQuiet = false;           // without warnings
};

// Stores the report in `text`, which is valid even when Failure (BadKernel) is thrown because of
// errors or, when strict, warnings. Prints a summary to standard error.
void check(const CheckCommandRequest& request, std::string& text);

} // namespace pbhost
