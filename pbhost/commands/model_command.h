// The command `model`: writes what the front end reads out of a file as one JSON object.
#pragma once

#include <string>

namespace pbhost {

// The object as text, indented, with a line end. Needs a running command; throws Failure.
std::string modelAsJson(const std::string& path);

} // namespace pbhost
