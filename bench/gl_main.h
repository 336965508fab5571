// What the benchmarks of frames have for a `main`: runs all benchmarks in one engine session, and
// names the driver in the report.
//
// `--keep-large-blocks` makes the C library keep large blocks of memory, as pbhost does.
#pragma once

namespace bench {

// Gives the exit code.
int runWithOpenGl(int argc, char** argv);

} // namespace bench
