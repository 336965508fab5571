// The `main` function of the frame benchmarks: runs all benchmarks in one engine session and
// reports the name of the driver.
//
// `--keep-large-blocks` makes the C library keep freed large blocks, as pbhost does.
#pragma once

namespace bench {

// Returns the exit code.
int runWithOpenGl(int argc, char** argv);

} // namespace bench
