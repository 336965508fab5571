// Checks many files in several processes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "pbhost/check/reports.h"

namespace pbhost {

// Checks the files with that many processes at a time, and returns the results in the files' order.
// A file that takes longer than the limit is a finding; zero seconds: no limit. Throws Failure if
// OpenGL is not available.
std::vector<CheckedFile> checkFiles(const std::vector<std::string>& files, std::size_t jobs,
                                    double timeoutSeconds);

} // namespace pbhost
