// Everything that is found about one file: what the readers forgive, and what the driver says.
#pragma once

#include <optional>
#include <string>

#include "hostkit/host.h"
#include "pbhost/check/program_compiler.h"
#include "pbhost/diagnostics/diagnostic.h"

namespace pbhost {

// A file to check.
struct CheckRequest {
    std::string file;
    std::optional<std::string> text; // instead of what is in the file
};

// A file that cannot be read is a finding, too.
Diagnostics checkFile(hostkit::Host& host, const ProgramCompiler& compiler,
                      const CheckRequest& request);

} // namespace pbhost
